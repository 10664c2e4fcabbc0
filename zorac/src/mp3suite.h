/** \file
 * What the MP3 tests share: their enumeration parameters, and the records that these stand for.
 */
#ifndef MP3SUITE_H
#define MP3SUITE_H

#include "suiteparms.h"
#include "suitetest.h"
#include "zorac.h"

/** Block type in the high four bits, mixed-block flag below. */
enum acBlock : int {
    acBlockNormal = 0,
    acBlockLong = 16,
    acBlockShort = 32,
    acBlockMixed = 33,
    acBlockStop = 48
};

/** The id bit of the frame header. */
enum acId : int { acIdMpeg2 = 0, acIdMpeg1 = 1 };

/** Channel mode in the high four bits, mode extension below. */
enum acMode : int {
    acModeStereo = 0,
    acModeJoint = 16,
    acModeIntensity = 17,
    acModeMs = 18,
    acModeMsIntensity = 19,
    acModeDual = 32,
    acModeMono = 48
};

/** The parameter "block". */
class acBlockItr : public bxMapIterator<acBlock> {
  public:
    acBlockItr() : bxMapIterator<acBlock>(acBlockNormal, "", "") {}
    void init(std::initializer_list<acBlock> values) {
        setMapParm<acBlock>(*this, "block", "block type",
                            {{acBlockNormal, "normal"},
                             {acBlockLong, "long"},
                             {acBlockShort, "short"},
                             {acBlockMixed, "mixed"},
                             {acBlockStop, "stop"}},
                            values);
    }
};

/** The parameter "id". */
class acIdItr : public bxMapIterator<acId> {
  public:
    acIdItr() : bxMapIterator<acId>(acIdMpeg1, "", "") {}
    void init(std::initializer_list<acId> values) {
        setMapParm<acId>(*this, "id", "stream id", {{acIdMpeg1, "MPEG-1"}, {acIdMpeg2, "MPEG-2"}}, values);
    }
};

/** The parameter "mode". */
class acModeItr : public bxMapIterator<acMode> {
  public:
    acModeItr() : bxMapIterator<acMode>(acModeStereo, "", "") {}
    void init(std::initializer_list<acMode> values) {
        setMapParm<acMode>(*this, "mode", "channel mode",
                           {{acModeStereo, "stereo"},
                            {acModeJoint, "joint"},
                            {acModeIntensity, "is_stereo"},
                            {acModeMs, "ms_stereo"},
                            {acModeMsIntensity, "ms_intensity"},
                            {acModeDual, "dual"},
                            {acModeMono, "mono"}},
                           values);
    }
};

constexpr int mp3Lines = 576;

/** The header of all MP3 tests: layer III, no check word, bit-rate index 7, sampling-frequency index 1. */
inline ZorMP3FrameHeader mp3Header(int id, int mode = 0) {
    ZorMP3FrameHeader header{};
    header.id = id;
    header.layer = 1;
    header.protectionBit = 1;
    header.bitrateIndex = 7;
    header.samplingFrequency = 1;
    header.mode = mode >> 4;
    header.modeExtension = mode & 7;
    return header;
}

/** Side information of which only the block fields say something. */
inline ZorMP3SideInfo mp3SideInfo(int block) {
    ZorMP3SideInfo side{};
    side.windowSwitching = block != 0;
    side.blockType = block >> 4;
    side.mixedBlock = (block & 7) != 0;
    return side;
}

#endif
