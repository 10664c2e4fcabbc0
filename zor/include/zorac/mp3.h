/** \file
 * The building blocks of layer III of ISO/IEC 11172-3 (id 1) and 13818-3 (id 0, low sampling frequencies),
 * and of its extension to half those frequencies (MPEG-2.5).
 *
 * Fixed point: sub-band samples and spectral lines of type 32s have 1.0 = full-scale PCM at 2^26; PCM of type
 * 16s has it at 2^15. Results out of range saturate. Filters and transforms compute in single precision.
 *
 * Layouts: a granule of sub-band samples is [18 time slots][32 sub-bands]. A spectrum has 576 lines in rising
 * frequency; short blocks are in window-interleaved order (line 3i+w is line i of window w) in the MDCT
 * domain, and in the order band, window, line in the quantised domain. A two-channel granule is two spectra
 * in a row, a frame is [granule][channel]; mono leaves the second channel's place untouched.
 *
 * Bit streams: *bitStream is the byte and *bitOffset (0 to 7) the bit in it, from the most significant, at
 * which a call begins; on success both are advanced. bitStreamEnd is one past the last byte.
 */
#ifndef ZORAC_MP3_H
#define ZORAC_MP3_H

#include "zortypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/** The fields of header() and error_check() as they stand in the stream; layer III is 1. */
typedef struct {
    int id, layer, protectionBit, bitrateIndex, samplingFrequency, paddingBit, privateBit;
    int mode, modeExtension, copyright, original, emphasis;
    int crcCheck; /**< 0 where the stream has none */
    int halfRate; /**< 1 in the half-rate extension (MPEG-2.5), whose id is 0; else 0 */
} ZorMP3FrameHeader;

/** The fields of side_info() for one granule of one channel. */
typedef struct {
    int part23Length, bigValues, globalGain, scalefacCompress, windowSwitching, blockType, mixedBlock;
    int tableSelect[3];
    int subblockGain[3];
    int region0Count, region1Count, preflag, scalefacScale, count1TableSelect;
} ZorMP3SideInfo;

/** What the psychoacoustic model says of one granule of one channel. */
typedef struct {
    Zor32f ratioLong[22];     /**< threshold / energy of each scale-factor band, long blocks */
    Zor32f ratioShort[13][3]; /**< the same for short blocks, by band and window */
    Zor32f perceptualEntropy; /**< bits */
} ZorMP3PsychInfo;

enum {
    zorMP3ScaleFactors = 40, /**< distance between the scale factors of two channels; at most 36 are used */
    zorMP3AnalysisState = 2080, /**< values in the state of zorsAnalysisPQMF_MP3_16s32s */
    zorMP3PcmStride = 2304,     /**< distance between the PCM of two channels for the psychoacoustic model */
    zorMP3WorkSize = 10000      /**< values in the buffers of the psychoacoustic model and the quantiser */
};

/**
 * Forward hybrid filter bank: frequency inversion, windowed MDCT and (but for short blocks) alias
 * butterflies. \param src 576 sub-band samples of this granule  \param dst 576 lines \param blockType 0 to
 * 3  \param mixedBlock not 0: the two lowest sub-bands take the window of type 0 \param overlap 576 values
 * of state, zero at the start \return zorStsNullPtrErr, zorStsBadArgErr
 */
ZOR_API ZorStatus zorsMDCTFwd_MP3_32s(const Zor32s* src, Zor32s* dst, int blockType, int mixedBlock,
                                      Zor32s* overlap);

/**
 * Inverse of zorsMDCTFwd_MP3_32s; the two together delay by one granule.
 * \param src 576 lines, those from nonZeroBound on are taken as 0  \param dst 576 sub-band samples
 * \param overlap 576 values of state
 * \param nonZeroBound 0 to 576
 * \param prevBlocks number of sub-bands (0 to 32) for which overlap holds data; those above count as zero,
 *        so 0 starts anew. On return that of this granule.
 * \return zorStsNullPtrErr, zorStsBadArgErr, zorStsSizeErr
 */
ZOR_API ZorStatus zorsMDCTInv_MP3_32s(const Zor32s* src, Zor32s* dst, Zor32s* overlap, int nonZeroBound,
                                      int* prevBlocks, int blockType, int mixedBlock);

/**
 * Huffman encoding of one granule of one channel: the big values by the regions and tables of sideInfo, then
 * countOneLen lines as quads. Region boundaries are those of the header's id and sampling frequency.
 * \param src 576 quantised lines in stream order
 * \param countOneLen lines after the big values to be coded as quads, a multiple of 4
 * \param hufSize bits that the code may take, 0 for as many as the stream has room for
 * \return zorStsNullPtrErr; zorStsBadArgErr for a value, table, offset or sampling frequency out of range;
 *         zorStsSizeErr for counts out of range or a code longer than hufSize; zorStsStreamEndErr for no room
 */
ZOR_API ZorStatus zorsHuffmanEncode_MP3_32s1u(const Zor32s* src, Zor8u** bitStream, int* bitOffset,
                                              const Zor8u* bitStreamEnd, const ZorMP3FrameHeader* frameHeader,
                                              const ZorMP3SideInfo* sideInfo, int countOneLen, int hufSize);

/**
 * Huffman decoding of one granule of one channel, the inverse of zorsHuffmanEncode_MP3_32s1u.
 * \param dst 576 lines; those above the coded ones become 0
 * \param nonZeroBound receives the number of lines up to the last that is not 0
 * \param countOneLen with hufSize 0: the lines coded as quads, a multiple of 4
 * \param hufSize bits of the Huffman data; quads are read up to this end, and the stream moves there.
 *        0: not known, the big values and countOneLen lines of quads are read
 * \return zorStsNullPtrErr, zorStsBadArgErr, zorStsSizeErr as for encoding; zorStsStreamEndErr where the
 *         stream ends, zorStsBadStreamErr where the big values go beyond hufSize; then dst is undefined
 */
ZOR_API ZorStatus zorsHuffmanDecode_MP3_1u32s(const Zor8u** bitStream, int* bitOffset,
                                              const Zor8u* bitStreamEnd, Zor32s* dst, int* nonZeroBound,
                                              const ZorMP3FrameHeader* frameHeader,
                                              const ZorMP3SideInfo* sideInfo, int countOneLen, int hufSize);

/**
 * As zorsHuffmanDecode_MP3_1u32s, with the caller's scale-factor band boundaries for the regions.
 * \param sfbLong, sfbShort six rows: MPEG-2 at 22.05, 24, 16 kHz, MPEG-1 at 44.1, 48, 32 kHz
 * \return as zorsHuffmanDecode_MP3_1u32s; zorStsBadArgErr also where a region would end within a pair
 */
ZOR_API ZorStatus zorsHuffmanDecodeSfb_MP3_1u32s(const Zor8u** bitStream, int* bitOffset,
                                                 const Zor8u* bitStreamEnd, Zor32s* dst, int* nonZeroBound,
                                                 const ZorMP3FrameHeader* frameHeader,
                                                 const ZorMP3SideInfo* sideInfo, const Zor16s (*sfbLong)[23],
                                                 const Zor16s (*sfbShort)[14], int countOneLen, int hufSize);

/**
 * As zorsHuffmanDecodeSfb_MP3_1u32s, with the caller's partition of mixed blocks.
 * \param mixedBands the number of long bands in a mixed block for id 0 and id 1 (6 and 8 in the standards);
 *        region 0 of a mixed block ends with them
 */
ZOR_API ZorStatus zorsHuffmanDecodeSfbMbp_MP3_1u32s(const Zor8u** bitStream, int* bitOffset,
                                                    const Zor8u* bitStreamEnd, Zor32s* dst, int* nonZeroBound,
                                                    const ZorMP3FrameHeader* frameHeader,
                                                    const ZorMP3SideInfo* sideInfo,
                                                    const Zor16s (*sfbLong)[23], const Zor16s (*sfbShort)[14],
                                                    const Zor16s* mixedBands, int countOneLen, int hufSize);

/**
 * Joint stereo encoding in place, in the MDCT domain, by mode and modeExtension of the header: M/S (extension
 * bit 1) below the intensity bound, intensity (bit 0) from it on: the left spectrum receives the carrier, the
 * right one 0, the right scale factors the positions. Without bit 0 all bands are M/S. Modes other than joint
 * stereo leave all as it is.
 * \param scaleFactorR 36 values; entries of bands below the bound are left alone
 * \param sideInfo two records, left and right; for id 0 the right scalefacCompress says the intensity scale
 * \param isSfbBound first band in intensity stereo: of long blocks [0], of short blocks by window. The long
 *        part of a mixed block takes part where all three are 0. The highest band has no scale factor and
 *        shares the position of the one below it; a bound there or above leaves no band to intensity stereo.
 * \return zorStsNullPtrErr, zorStsBadArgErr
 */
ZOR_API ZorStatus zorsJointStereoEncode_MP3_32s_I(Zor32s* srcDstL, Zor32s* srcDstR, Zor8s* scaleFactorR,
                                                  const ZorMP3FrameHeader* frameHeader,
                                                  const ZorMP3SideInfo* sideInfo, const int* isSfbBound);

/**
 * Requantisation of one granule in place: power 4/3, gains, scale factors, pre-emphasis; M/S and intensity
 * stereo; short blocks come out in window-interleaved order. In intensity stereo the highest band shares the
 * position of the one below it; where that is not in intensity stereo, both channels get the carrier (id 1)
 * or half of it (id 0). \param srcDst two channels of 576 lines \param length for each channel the lines that
 * may be other than 0, 0 to 576; updated \param scaleFactor two channels, zorMP3ScaleFactors apart  \param
 * sideInfo one record per channel \param buffer 2304 bytes of work space, 4-byte aligned \return
 * zorStsNullPtrErr; zorStsSizeErr for length; zorStsBadArgErr for a header, a side information or (at least
 * -8206, at most 8206) a line out of range
 */
ZOR_API ZorStatus zorsReQuantize_MP3_32s_I(Zor32s* srcDst, int* length, const Zor8s* scaleFactor,
                                           const ZorMP3SideInfo* sideInfo,
                                           const ZorMP3FrameHeader* frameHeader, Zor8u* buffer);

/** As zorsReQuantize_MP3_32s_I, with the caller's band boundaries (as for zorsHuffmanDecodeSfb_MP3_1u32s). */
ZOR_API ZorStatus zorsReQuantizeSfb_MP3_32s_I(Zor32s* srcDst, int* length, const Zor8s* scaleFactor,
                                              const ZorMP3SideInfo* sideInfo,
                                              const ZorMP3FrameHeader* frameHeader, Zor8u* buffer,
                                              const Zor16s (*sfbLong)[23], const Zor16s (*sfbShort)[14]);

/** Opaque states of the floating-point filter banks; they live in memory of the caller. */
typedef struct ZorMP3SynthesisState_32f ZorMP3SynthesisState_32f;
typedef struct ZorMP3AnalysisState_32f ZorMP3AnalysisState_32f;

/** Bytes for the state of the synthesis filter. */
ZOR_API ZorStatus zorsSynthesisFilterGetSize_PQMF_MP3_32f(int* sizeByte);
/** Sets up a state, with silence before it, in memory (any alignment), which has the size told by GetSize.
 */
ZOR_API ZorStatus zorsSynthesisFilterInit_PQMF_MP3_32f(ZorMP3SynthesisState_32f** state, Zor8u* memory);

/**
 * Polyphase synthesis of 32 sub-band samples into 32 PCM samples.
 * \param mode distance between PCM samples: 1, or 2 for one channel of an interleaved pair
 * \return zorStsNullPtrErr, zorStsBadArgErr, zorStsContextErr
 */
ZOR_API ZorStatus zorsSynthesisFilter_PQMF_MP3_32f(const Zor32f* src, Zor32f* dst,
                                                   ZorMP3SynthesisState_32f* state, int mode);

/** Bytes for the state of the analysis filter. */
ZOR_API ZorStatus zorsAnalysisFilterGetSize_PQMF_MP3_32f(int* sizeByte);
/** As zorsSynthesisFilterInit_PQMF_MP3_32f. */
ZOR_API ZorStatus zorsAnalysisFilterInit_PQMF_MP3_32f(ZorMP3AnalysisState_32f** state, Zor8u* memory);

/** Polyphase analysis of 32 PCM samples, mode apart, into 32 sub-band samples; errors as for synthesis. */
ZOR_API ZorStatus zorsAnalysisFilter_PQMF_MP3_32f(const Zor32f* src, Zor32f* dst,
                                                  ZorMP3AnalysisState_32f* state, int mode);

/**
 * Polyphase analysis of two channels of 32 PCM samples.
 * \param src 64 samples: mode 1 one channel after the other, mode 2 interleaved
 * \param dstL, dstR 32 sub-band samples each
 * \param state zorMP3AnalysisState values, zero at the start
 * \return zorStsNullPtrErr, zorStsBadArgErr, zorStsContextErr
 */
ZOR_API ZorStatus zorsAnalysisPQMF_MP3_16s32s(const Zor16s* src, Zor32s* dstL, Zor32s* dstR, Zor16s* state,
                                              int mode);

/**
 * Polyphase synthesis of 32 PCM samples for each of `mode` channels, interleaved where there are two.
 * \param srcDst for each channel a ring of 16 rows of 32 values, zero at the start. The caller puts the new
 *        sub-band samples into row *row; the call replaces them by their cosine transform.
 * \param dst 32 x mode samples
 * \param row 0 to 15; advanced to the next row
 * \return zorStsNullPtrErr, zorStsBadArgErr
 */
ZOR_API ZorStatus zorsSynthPQMF_MP3_32s16s(Zor32s* srcDst, Zor16s* dst, int* row, int mode);

/**
 * Psychoacoustic model II for one frame.
 * \param src PCM, channels zorMP3PcmStride apart; of each channel the frame before and then this frame (1152
 *        samples each for id 1, 576 for id 0)
 * \param dstPsychInfo [granule][2 channels]
 * \param sideInfo [granule][2 channels]: windowSwitching, blockType and mixedBlock receive the block
 * decision \param frameHeader in joint stereo mode bit 1 of modeExtension receives the M/S decision; then
 * the ratios are those of M and S \param state zorMP3WorkSize values, zero at the start: for each channel
 * the two last spectra of the lowest lines, the two last thresholds of each partition, the last block type;
 * and work space \return zorStsNullPtrErr, zorStsBadArgErr
 */
ZOR_API ZorStatus zorsPsychoacousticModelTwo_MP3_16s(const Zor16s* src, ZorMP3PsychInfo* dstPsychInfo,
                                                     ZorMP3SideInfo* sideInfo, ZorMP3FrameHeader* frameHeader,
                                                     Zor32s* state);

/**
 * Quantises a frame in place so that it fits its bit rate and the noise of each band stays below the model's
 * threshold where the bits suffice.
 * \param srcDst [granule][2 channels][576]: lines in the MDCT domain, becoming values in stream order
 * \param scaleFactor [granule][2 channels][zorMP3ScaleFactors]
 * \param countOneLen, hufSize [granule][2 channels]: lines coded as quads and bits of the Huffman code, the
 *        last two arguments of zorsHuffmanEncode_MP3_32s1u
 * \param psychInfo from the model
 * \param sideInfo block fields are read, all others written
 * \param reservoir bits in the reservoir, 0 at the start; updated. It holds whole bytes, no more than
 * main_data_begin reaches and than a decoder's buffer of 7680 bits has room for beside the next frame. What
 * the frame has for main data, with the reservoir before the call, beyond part23Length of all granules and
 * the reservoir after it is stuffing: ancillary data behind the last granule \param buffer zorMP3WorkSize
 * values of work space \return zorStsNullPtrErr; zorStsBadArgErr for a header (free format too), a side
 * information or a reservoir out of range
 */
ZOR_API ZorStatus zorsQuantize_MP3_32s_I(Zor32s* srcDst, Zor8s* scaleFactor, int* countOneLen, int* hufSize,
                                         const ZorMP3PsychInfo* psychInfo, ZorMP3SideInfo* sideInfo,
                                         const ZorMP3FrameHeader* frameHeader, int* reservoir,
                                         Zor32s* buffer);

/**
 * Unpacks a frame header, and the check word after it where the header announces one. Reserved values are
 * handed out as they stand. The sync word of the half-rate extension is taken too.
 * \return zorStsNullPtrErr, zorStsStreamEndErr; zorStsBadStreamErr where there is no sync word
 */
ZOR_API ZorStatus zorsUnpackFrameHeader_MP3(const Zor8u** bitStream, const Zor8u* bitStreamEnd,
                                            ZorMP3FrameHeader* frameHeader);

/**
 * Unpacks the side information of a frame, for id and mode of the header. Fields that the syntax leaves out
 * are 0, but for the region counts, which have the values that the standard implies.
 * \param sideInfo [granule][2 channels], for id 0 one granule
 * \param mainDataBegin, privateBits receive the fields of the frame
 * \param scfsi receives 4 flags for each channel; 0 for id 0
 * \return zorStsNullPtrErr, zorStsBadArgErr (offset), zorStsStreamEndErr
 */
ZOR_API ZorStatus zorsUnpackSideInfo_MP3(const Zor8u** bitStream, int* bitOffset, const Zor8u* bitStreamEnd,
                                         ZorMP3SideInfo* sideInfo, int* mainDataBegin, int* privateBits,
                                         int* scfsi, const ZorMP3FrameHeader* frameHeader);

/**
 * Unpacks the scale factors of one granule of one channel.
 * \param dst 36 values: long bands; or short bands, three windows each; or the long bands, then the short
 *        bands of a mixed block. Entries without a code become 0.
 * \param sideInfo for id 0 preflag receives the value that scalefacCompress implies
 * \param scfsi the 4 flags of the channel: in granule 1 of id 1 the groups flagged stay as dst has them
 * \return zorStsNullPtrErr; zorStsBadArgErr for an offset, granule, channel or scalefacCompress out of range;
 *         zorStsStreamEndErr
 */
ZOR_API ZorStatus zorsUnpackScaleFactors_MP3_1u8s(const Zor8u** bitStream, int* bitOffset,
                                                  const Zor8u* bitStreamEnd, Zor8s* dst,
                                                  ZorMP3SideInfo* sideInfo, const int* scfsi,
                                                  const ZorMP3FrameHeader* frameHeader, int granule,
                                                  int channel);

/*
 * What a decoder or an encoder needs beside the functions above. These are not timed.
 */

/** Bits behind the point of sub-band samples and spectral lines of type 32s: 1.0 is 1 << zorMP3FractionBits.
 */
enum { zorMP3FractionBits = 26 };

/** What a frame header says of its frame. */
typedef struct {
    int samplingRate; /**< Hz */
    int bitRate;      /**< bit/s; 0 for free format */
    int channels;     /**< 1 or 2 */
    int granules;     /**< 2, or 1 where id is 0; a granule is 576 samples of each channel */
    int headerSize;   /**< bytes of header() and error_check() */
    int sideInfoSize; /**< bytes */
    int frameLength;  /**< bytes in all, padding included; 0 for free format. What header and side information
                         leave  is main data */
} ZorMP3FrameInfo;

/** \return zorStsNullPtrErr; zorStsBadArgErr for a reserved value, or a layer other than III. */
ZOR_API ZorStatus zorsGetFrameInfo_MP3(const ZorMP3FrameHeader* frameHeader, ZorMP3FrameInfo* info);

/**
 * The scale-factor band boundaries that the standards give for a header, as the functions with "Sfb" take
 * them: six rows, of which that of the header holds. \return zorStsNullPtrErr
 */
ZOR_API ZorStatus zorsGetSfbTables_MP3(const ZorMP3FrameHeader* frameHeader, const Zor16s (**sfbLong)[23],
                                       const Zor16s (**sfbShort)[14]);

/** Mid and side in place to left and right: (m + s) / sqrt 2 and (m - s) / sqrt 2. \return zorStsNullPtrErr;
 * zorStsSizeErr for length below 1. */
ZOR_API ZorStatus zorsDecodeMidSide_MP3_32f_I(Zor32f* srcDstL, Zor32f* srcDstR, int length);

/**
 * Intensity stereo of one band: the carrier at srcDstL becomes the left channel, dstR receives the right one.
 * \param position of the band: 0 to 6 for id 1, 0 to 30 for id 0
 * \param intensityScale for id 0 the lowest bit of the right channel's scalefacCompress; for id 1 not used
 * \return zorStsNullPtrErr; zorStsSizeErr for length below 1; zorStsBadArgErr for a position out of range
 */
ZOR_API ZorStatus zorsDecodeIntensity_MP3_32f_I(Zor32f* srcDstL, Zor32f* dstR, int length, int id,
                                                int position, int intensityScale);

/**
 * Polyphase synthesis of a granule, 18 slots of 32 sub-band samples, into 576 PCM samples, as 18 calls of
 * zorsSynthesisFilter_PQMF_MP3_32f give them, but faster; both forms may take turns on one state.
 * \param mode distance between PCM samples: 1, or 2 for one channel of an interleaved pair
 * \return zorStsNullPtrErr, zorStsBadArgErr, zorStsContextErr
 */
ZOR_API ZorStatus zorsSynthesisGranule_PQMF_MP3_32f(const Zor32f* src, Zor32f* dst,
                                                    ZorMP3SynthesisState_32f* state, int mode);

#ifdef __cplusplus
}
#endif

#endif
