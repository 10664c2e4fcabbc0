/** \file
 * What a decoder of AAC reads around the spectra: ADTS headers, window information, band tables. These
 * functions stand beside the timed ones of aac.h.
 *
 * bitStream, bitOffset and bitStreamEnd are as in aac.h; a call that fails leaves the position as it was.
 */
#ifndef ZORAC_AACSTREAM_H
#define ZORAC_AACSTREAM_H

#include "zorac/aac.h"

#ifdef __cplusplus
extern "C" {
#endif

/** The header of an ADTS frame, ISO/IEC 13818-7 6.2, and what follows from it. */
typedef struct {
    int id;                   /**< 1 for ISO/IEC 13818-7, 0 for ISO/IEC 14496-3 */
    int profile;              /**< zorAacMain, zorAacLC or zorAacLTP; 2 is the profile that is not served */
    int samplingRateIndex;    /**< 0 to 11 */
    int channelConfiguration; /**< 0 to 7: channels and their order, 0 where the stream says it elsewhere */
    int blocks;               /**< raw data blocks in the frame, 1 to 4, of 1024 samples each */
    int headerSize;           /**< bytes ahead of the first block, the check word included */
    int frameLength;          /**< bytes in all */
    int samplingRate;         /**< hertz */
    int bitRate;              /**< bits a second, as if all frames were as long as this one */
    int bufferFullness;       /**< 32-bit words left in the encoder's buffer; 0x7FF for a variable bit rate */
} ZorAacFrameHeader;

/**
 * Reads the header at *bitStream, a byte, and goes behind it and its check word.
 * \return zorStsNullPtrErr; zorStsStreamEndErr; zorStsBadStreamErr where no header is, or one with a reserved
 *         sampling rate or a length that does not hold it
 */
ZOR_API ZorStatus zorsUnpackFrameHeader_AAC(const Zor8u** bitStream, const Zor8u* bitStreamEnd,
                                            ZorAacFrameHeader* frameHeader);

/** Long-term prediction of a channel, as the functions of that name take it. */
typedef struct {
    int lag;           /**< 0 to 2047 */
    int coefIndex;     /**< 0 to 7 */
    Zor8u ltpFlag[52]; /**< first whether prediction is on at all, then for each band */
} ZorAacLtp;

/** The ics_info of a channel or of a pair with a common window. */
typedef struct {
    int winSequence;  /**< zorAacOnlyLong to zorAacLongStop */
    int winShape;     /**< 0 or 1 */
    int maxSfb;       /**< bands sent */
    int numWinGrp;    /**< window groups */
    int winGrpLen[8]; /**< windows of each group */
    int winLen;       /**< 1024 or 128 */
    /** Main profile: not 0 for each band that is predicted, all 0 without prediction. */
    Zor8u predictionUsed[41];
    int predictorReset; /**< Main profile: the group to be reset behind this frame, 1 to 30, or 0 */
    ZorAacLtp ltp[2];   /**< LTP profile: of the channel, or of both channels of a common window */
} ZorAacIcsInfo;

/**
 * Reads an ics_info, ISO/IEC 14496-3 4.4.2.1.
 * \param profile       zorAacMain, zorAacLC or zorAacLTP
 * \param commonWindow  1 for the one of a pair, 0 for that of a channel
 * \return zorStsNullPtrErr, zorStsBadArgErr (offset, profile, samplingRateIndex, commonWindow),
 *         zorStsStreamEndErr; zorStsBadStreamErr for more bands than there are and for prediction in the low
 *         complexity profile; with the last two *info may have been written
 */
ZOR_API ZorStatus zorsUnpackIcsInfo_AAC(const Zor8u** bitStream, int* bitOffset, const Zor8u* bitStreamEnd,
                                        ZorAacIcsInfo* info, int profile, int samplingRateIndex,
                                        int commonWindow);

/**
 * zorsNoiselessDecode_AAC behind the global gain, which is taken from channel->globalGain (0 to 255): a
 * channel without a common window has its ics_info between the two.
 */
ZOR_API ZorStatus zorsNoiselessDecodeBehindGain_AAC(const Zor8u** bitStream, int* bitOffset,
                                                    const Zor8u* bitStreamEnd, ZorAacChannel* channel,
                                                    Zor16s* dstScaleFactor, Zor32s* dstSpectrum,
                                                    Zor8u* dstSfbCb, Zor8s* dstTnsCoef, int profile,
                                                    int scaleFlag);

/**
 * The scale-factor bands of a window of 1024 or 128 lines: band b spans the lines (*offset)[b] to
 * (*offset)[b + 1] - 1. \return zorStsNullPtrErr; zorStsBadArgErr for no such sampling rate or window
 */
ZOR_API ZorStatus zorsGetSfbTable_AAC(int samplingRateIndex, int winLen, const Zor16u** offset,
                                      int* numBands);

/** Bands that the predictors of the Main profile serve at most. \return zorStsNullPtrErr, zorStsBadArgErr */
ZOR_API ZorStatus zorsGetPredictionBands_AAC(int samplingRateIndex, int* numBands);

#ifdef __cplusplus
}
#endif

#endif
