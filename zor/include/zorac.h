/** \file
 * Audio coding: the building blocks of AAC, MP3, SBR, DTS and vector quantisation.
 *
 * Every function returns a ZorStatus. Arguments are checked once per call; a call that fails with a negative
 * status has written nothing unless its comment says otherwise. No function allocates memory except the
 * ones whose name ends in "InitAlloc" before the type.
 */
#ifndef ZORAC_H
#define ZORAC_H

#include "zortypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/** The version record of this library. */
ZOR_API const ZorLibraryVersion* zoracGetLibVersion(void);

/* ---- AAC ---------------------------------------------------------------------------------------------- */

/** Window sequence of a channel, ISO/IEC 14496-3 window_sequence. */
enum { zorAacOnlyLong = 0, zorAacLongStart = 1, zorAacEightShort = 2, zorAacLongStop = 3 };

/** Profile, ISO/IEC 13818-7. The scalable sampling rate profile (2) is not served. */
enum { zorAacMain = 0, zorAacLC = 1, zorAacLTP = 3 };

/**
 * Temporal noise shaping, ISO/IEC 14496-3 4.6.9, in place: the all-pole filters of the decoder
 * (zorsDecodeTNS) or the all-zero filters of the encoder that they undo (zorsEncodeTNS).
 *
 * The filters of a window follow one another from the highest band down, each over its own region.
 * Arithmetic is fixed point and saturates.
 *
 * \param pSrcDst     the spectrum: 1024 lines, or 8 windows of 128 lines
 * \param pNumFilt    per window: number of filters, 0 to 3 (long) or 0 to 1 (short)
 * \param pRegionLen  per filter: length of its region in bands
 * \param pOrder      per filter: order, up to 20 (long windows of the Main profile), 12 (long) or 7 (short)
 * \param pCoefRes    per window: resolution of the coefficients, 3 or 4 bits
 * \param pCoef       the coefficients of all filters one after another, `order` for each filter. The low
 *                    `resolution` bits count, as a two's complement number
 * \param pDirection  per filter: 0 upward in frequency, 1 downward
 * \param maxSfb      number of bands sent
 * \param profile     zorAacMain, zorAacLC or zorAacLTP
 * \param samplingRateIndex 0 to 11
 * \param winLen      window length, 1024 or 128
 * \return zorStsNullPtrErr, zorStsSizeErr (winLen, maxSfb), zorStsBadArgErr (any other)
 */
ZOR_API ZorStatus zorsDecodeTNS_AAC_32s_I(Zor32s* pSrcDst, const int* pNumFilt, const int* pRegionLen,
                                          const int* pOrder, const int* pCoefRes, const Zor8s* pCoef,
                                          const int* pDirection, int maxSfb, int profile,
                                          int samplingRateIndex, int winLen);
/** \copydoc zorsDecodeTNS_AAC_32s_I */
ZOR_API ZorStatus zorsEncodeTNS_AAC_32s_I(Zor32s* pSrcDst, const int* pNumFilt, const int* pRegionLen,
                                          const int* pOrder, const int* pCoefRes, const Zor8s* pCoef,
                                          const int* pDirection, int maxSfb, int profile,
                                          int samplingRateIndex, int winLen);

/*
 * Bit streams: ppBitStream and pBitOffset (0 to 7, from the most significant bit) are the position; they
 * advance. pBitStreamEnd is one past the last byte. A call that fails leaves the position as it was.
 *
 * Spectra are integers in the standard's unit. In "group order" the windows of a group are interleaved band
 * by band, as the stream sends them: group, band, window, line. In "window order" each window has its lines
 * in one piece, window after window. With groups of one window the two are the same.
 *
 * The windows of a frame are described by numWinGrp and pWinGrpLen (the windows of each group: 1 in all, or 8
 * with winLen 128), maxSfb (bands sent), samplingRateIndex (0 to 11) and winLen (1024 or 128). Tables "per
 * band" have numWinGrp * maxSfb elements, group after group. Functions that take these arguments return
 * zorStsNullPtrErr, zorStsSizeErr (winLen, maxSfb, groups) and zorStsBadArgErr (samplingRateIndex).
 */

/**
 * Data-stream element, ISO/IEC 14496-3 4.4.2.1 data_stream_element, behind its element identifier.
 * \param pElementTag  the element's instance tag, 0 to 15
 * \param pCount       number of bytes, 0 to 510
 * \param pDst         the bytes
 * \param dstSize      room in pDst
 * \return zorStsNullPtrErr, zorStsBadArgErr (bit offset), zorStsSizeErr (more bytes than room; nothing is
 *         copied), zorStsStreamEndErr
 */
ZOR_API ZorStatus zorsDecodeDatStrElt_AAC(const Zor8u** ppBitStream, int* pBitOffset,
                                          const Zor8u* pBitStreamEnd, int* pElementTag, int* pCount,
                                          Zor8u* pDst, int dstSize);
/** Fill element: the payload's bytes, 0 to 269, extension type included; else as zorsDecodeDatStrElt_AAC. */
ZOR_API ZorStatus zorsDecodeFillElt_AAC(const Zor8u** ppBitStream, int* pBitOffset,
                                        const Zor8u* pBitStreamEnd, int* pCount, Zor8u* pDst, int dstSize);

/** Code books of bands that hold no coded lines. */
enum { zorAacNoiseBook = 13, zorAacIntensityOutOfPhase = 14, zorAacIntensityInPhase = 15 };

/** The filters of a channel in the form that zorsDecodeTNS_AAC_32s_I takes; per window and per filter. */
typedef struct {
    int numFilt[8], coefRes[8];
    int regionLen[8], order[8], direction[8];
} ZorAacTns;

/** What a channel's stream is decoded with and what it says of itself beside the spectrum. */
typedef struct {
    int winSequence;       /**< in: zorAacOnlyLong to zorAacLongStop */
    int maxSfb;            /**< in: bands sent */
    int numWinGrp;         /**< in: window groups */
    int winGrpLen[8];      /**< in: windows of each group */
    int samplingRateIndex; /**< in: 0 to 11 */
    int globalGain;        /**< out: the first scale factor, 0 to 255 */
    int pulsePresent;      /**< out: 1 where pulses were added to the spectrum */
    int tnsPresent;        /**< out: 1 where there are filters */
    ZorAacTns tns;         /**< out: the filters; no filter in any window without tnsPresent */
} ZorAacChannel;

/**
 * Noiseless decoding of one channel of the low complexity profile, ISO/IEC 14496-3 individual_channel_stream
 * behind its ics_info: global gain, section data, scale factors, pulses, filters, spectral data.
 *
 * \param pChannel       in and out as its fields say
 * \param pDstScaleFactor per band: the scale factor (0 to 255), the intensity position or the noise energy
 * \param pDstSpectrum   1024 quantised lines in group order, pulses added; 0 where nothing was sent
 * \param pDstSfbCb      per band: its code book, 0 to 15
 * \param pDstTnsCoef    60 elements: the coefficients of the filters one after another
 * \return zorStsNullPtrErr, zorStsBadArgErr, zorStsSizeErr (a field of pChannel out of its range),
 *         zorStsStreamEndErr, zorStsBadStreamErr; with the last two the outputs may have been written
 */
ZOR_API ZorStatus zorsNoiselessDecoder_LC_AAC(const Zor8u** ppBitStream, int* pBitOffset,
                                              const Zor8u* pBitStreamEnd, ZorAacChannel* pChannel,
                                              Zor16s* pDstScaleFactor, Zor32s* pDstSpectrum, Zor8u* pDstSfbCb,
                                              Zor8s* pDstTnsCoef);
/**
 * The same for every profile, and for the layers of a scalable stream.
 * \param profile    zorAacMain, zorAacLC or zorAacLTP: the largest filter order follows from it
 * \param scaleFlag  1 in a layer of a scalable stream, which has no pulses and filters here
 */
ZOR_API ZorStatus zorsNoiselessDecode_AAC(const Zor8u** ppBitStream, int* pBitOffset,
                                          const Zor8u* pBitStreamEnd, ZorAacChannel* pChannel,
                                          Zor16s* pDstScaleFactor, Zor32s* pDstSpectrum, Zor8u* pDstSfbCb,
                                          Zor8s* pDstTnsCoef, int profile, int scaleFlag);

/**
 * Inverse quantisation in place, group order: sign(q) |q|^(4/3) 2^((scale factor - 100) / 4), rounded and
 * saturated, to within 2^-22 of the value. Bands with code book 0 or one of noise and intensity, and lines
 * above maxSfb, become 0. Magnitudes above 8191 count as 8191.
 */
ZOR_API ZorStatus zorsQuantInv_AAC_32s_I(Zor32s* pSrcDst, const Zor16s* pScaleFactor, const Zor8u* pSfbCb,
                                         int numWinGrp, const int* pWinGrpLen, int maxSfb,
                                         int samplingRateIndex, int winLen);

/** From group order to window order; lines above maxSfb become 0. pSrc and pDst are two vectors of 1024. */
ZOR_API ZorStatus zorsDeinterleaveSpectrum_AAC_32s(const Zor32s* pSrc, Zor32s* pDst, int numWinGrp,
                                                   const int* pWinGrpLen, int maxSfb, int samplingRateIndex,
                                                   int winLen);

/**
 * M/S stereo in place, window order: (l, r) becomes (l + r, l - r), saturated, in the bands in use.
 * \param msMaskPresent  0 no band, 1 those of pMsUsed, 2 all bands
 * \param pMsUsed        per band: not 0 where the band is coded as M/S; may be null unless msMaskPresent is 1
 * \param pSfbCb         per band: the right channel's code book; bands of noise and intensity are left alone
 */
ZOR_API ZorStatus zorsDecodeMsStereo_AAC_32s_I(Zor32s* pSrcDstL, Zor32s* pSrcDstR, int msMaskPresent,
                                               const Zor8u* pMsUsed, const Zor8u* pSfbCb, int numWinGrp,
                                               const int* pWinGrpLen, int maxSfb, int samplingRateIndex,
                                               int winLen);
/**
 * Intensity stereo, window order: in the bands whose code book (of the right channel) is 14 or 15 the right
 * channel is the left one times 2^(-position / 4), negated for book 14; where msMaskPresent is 1 and the band
 * is marked in pMsUsed, the sign is turned once more. Other bands stay as they are.
 * \param pScaleFactor  per band: the intensity position
 */
ZOR_API ZorStatus zorsDecodeIsStereo_AAC_32s(const Zor32s* pSrcL, Zor32s* pDstR, const Zor16s* pScaleFactor,
                                             int msMaskPresent, const Zor8u* pMsUsed, const Zor8u* pSfbCb,
                                             int numWinGrp, const int* pWinGrpLen, int maxSfb,
                                             int samplingRateIndex, int winLen);
/**
 * Perceptual noise substitution, window order: the bands with code book 13 get noise whose energy in each
 * window is 2^(noise energy / 2).
 *
 * \param pScaleFactor per band: the noise energy
 * \param pRandomState state of the generator; any number at first
 * \param pBandState   per band: where the generator stood at the band's start. The first channel of a pair
 *                     writes it
 * \param second       1 for the second channel of a pair: in the bands marked in pMsUsed it repeats the first
 *                     channel's noise. pMsUsed may be null when it is 0
 */
ZOR_API ZorStatus zorsDecodePNS_AAC_32s(Zor32s* pSrcDst, const Zor16s* pScaleFactor, const Zor8u* pSfbCb,
                                        Zor32u* pRandomState, Zor32s* pBandState, int second,
                                        const Zor8u* pMsUsed, int numWinGrp, const int* pWinGrpLen,
                                        int maxSfb, int samplingRateIndex, int winLen);

/*
 * Transforms. winShape and prevWinShape are the window shapes of this and of the previous frame: 0 sine, 1
 * Kaiser-Bessel derived. pBuffer is work space of 2048 elements. They return zorStsNullPtrErr and
 * zorStsBadArgErr (winSequence, a shape).
 */

/**
 * Forward MDCT, ISO/IEC 14496-3 4.B.11: windowing and X[k] = 2 sum z[n] cos(2 pi / N (n + n0)(k + 1/2)),
 * rounded and saturated.
 *
 * Long sequences take 1024 new samples and give 1024 lines. zorAacEightShort takes the 128 new samples of one
 * of its windows and gives that window's 128 lines: the caller hands over the eight windows one by one, which
 * begin at sample 448 of the frame's 2048. The first of them has the shape prevWinShape in its first half, so
 * pass winShape there for the others.
 *
 * \param pSrc           the new samples
 * \param pSrcDstOverlap the samples before them, as many; replaced by the new ones
 */
ZOR_API ZorStatus zorsMDCTFwd_AAC_32s(const Zor32s* pSrc, Zor32s* pDst, Zor32s* pSrcDstOverlap,
                                      int winSequence, int winShape, int prevWinShape, Zor32s* pBuffer);
/**
 * Inverse MDCT with windowing, overlap and add: 1024 lines (in window order) to 1024 samples, rounded and
 * saturated to 16 bits. It undoes zorsMDCTFwd_AAC_32s.
 * \param pSrcDstOverlap 1024 elements, zeros at first: what this frame adds to the next one, with 8 bits
 *                       behind the binary point
 */
ZOR_API ZorStatus zorsMDCTInv_AAC_32s16s(const Zor32s* pSrc, Zor16s* pDst, Zor32s* pSrcDstOverlap,
                                         int winSequence, int winShape, int prevWinShape, Zor32s* pBuffer);

/**
 * Long-term prediction, ISO/IEC 14496-3 4.6.7: predicts the frame's 2048 samples from the past and transforms
 * them.
 * \param pSrc   4096 samples; the frame begins at the 2049th. Before it stand the decoded samples, from it on
 *               the aliased half that is to be overlapped, then zeros
 * \param pDst   2048 elements: the predicted spectrum in the first 1024 (window order), then work space
 * \param lag    0 to 2047: how far back the prediction looks
 * \param coefIndex 0 to 7: index of the gain
 * \return zorStsNullPtrErr, zorStsBadArgErr
 */
ZOR_API ZorStatus zorsLongTermPredict_AAC_32s(const Zor32s* pSrc, Zor32s* pDst, int lag, int coefIndex,
                                              int winSequence, int winShape, int prevWinShape);
/**
 * Adds the predicted spectrum in the bands that use it, saturated; window order, up to 40 bands of long and 8
 * of short windows. \param pSrc      the predicted spectrum, 1024 lines \param pSrcDst   the spectrum, 1024
 * lines \param pLtpFlag  maxSfb + 1 elements: not 0 where prediction is on at all, then for each band
 */
ZOR_API ZorStatus zorsLongTermReconstruct_AAC_32s(const Zor32s* pSrc, Zor32s* pSrcDst, const Zor8u* pLtpFlag,
                                                  int winSequence, int maxSfb, int samplingRateIndex);

/* ---- MP3 ----------------------------------------------------------------------------------------------
 *
 * Layer III of ISO/IEC 11172-3 (id 1) and 13818-3 (id 0, low sampling frequencies).
 *
 * Fixed point: sub-band samples and spectral lines of type 32s have 1.0 = full-scale PCM at 2^26; PCM of type
 * 16s has it at 2^15. Results out of range saturate. Filters and transforms compute in single precision.
 *
 * Layouts: a granule of sub-band samples is [18 time slots][32 sub-bands]. A spectrum has 576 lines in rising
 * frequency; short blocks are in window-interleaved order (line 3i+w is line i of window w) in the MDCT
 * domain, and in the order band, window, line in the quantised domain. A two-channel granule is two spectra
 * in a row, a frame is [granule][channel]; mono leaves the second channel's place untouched.
 *
 * Bit streams: *ppStream is the byte and *pBitOffset (0 to 7) the bit in it, from the most significant, at
 * which a call begins; on success both are advanced. pStreamEnd is one past the last byte.
 */

/** The fields of header() and error_check() as they stand in the stream; layer III is 1. */
typedef struct {
    int id, layer, protectionBit, bitrateIndex, samplingFrequency, paddingBit, privateBit;
    int mode, modeExtension, copyright, original, emphasis;
    int crcCheck; /**< 0 where the stream has none */
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
 * butterflies. \param pSrc 576 sub-band samples of this granule  \param pDst 576 lines \param blockType 0 to
 * 3  \param mixedBlock not 0: the two lowest sub-bands take the window of type 0 \param pOverlap 576 values
 * of state, zero at the start \return zorStsNullPtrErr, zorStsBadArgErr
 */
ZOR_API ZorStatus zorsMDCTFwd_MP3_32s(const Zor32s* pSrc, Zor32s* pDst, int blockType, int mixedBlock,
                                      Zor32s* pOverlap);

/**
 * Inverse of zorsMDCTFwd_MP3_32s; the two together delay by one granule.
 * \param pSrc 576 lines, those from nonZeroBound on are taken as 0  \param pDst 576 sub-band samples
 * \param pOverlap 576 values of state
 * \param nonZeroBound 0 to 576
 * \param pPrevBlocks number of sub-bands (0 to 32) for which pOverlap holds data; those above count as zero,
 *        so 0 starts anew. On return that of this granule.
 * \return zorStsNullPtrErr, zorStsBadArgErr, zorStsSizeErr
 */
ZOR_API ZorStatus zorsMDCTInv_MP3_32s(const Zor32s* pSrc, Zor32s* pDst, Zor32s* pOverlap, int nonZeroBound,
                                      int* pPrevBlocks, int blockType, int mixedBlock);

/**
 * Huffman encoding of one granule of one channel: the big values by the regions and tables of pSideInfo, then
 * countOneLen lines as quads. Region boundaries are those of the header's id and sampling frequency.
 * \param pSrc 576 quantised lines in stream order
 * \param countOneLen lines after the big values to be coded as quads, a multiple of 4
 * \param hufSize bits that the code may take, 0 for as many as the stream has room for
 * \return zorStsNullPtrErr; zorStsBadArgErr for a value, table, offset or sampling frequency out of range;
 *         zorStsSizeErr for counts out of range or a code longer than hufSize; zorStsStreamEndErr for no room
 */
ZOR_API ZorStatus zorsHuffmanEncode_MP3_32s1u(const Zor32s* pSrc, Zor8u** ppStream, int* pBitOffset,
                                              const Zor8u* pStreamEnd, const ZorMP3FrameHeader* pFrameHeader,
                                              const ZorMP3SideInfo* pSideInfo, int countOneLen, int hufSize);

/**
 * Huffman decoding of one granule of one channel, the inverse of zorsHuffmanEncode_MP3_32s1u.
 * \param pDst 576 lines; those above the coded ones become 0
 * \param pNonZeroBound receives the number of lines up to the last that is not 0
 * \param countOneLen with hufSize 0: the lines coded as quads, a multiple of 4
 * \param hufSize bits of the Huffman data; quads are read up to this end, and the stream moves there.
 *        0: not known, the big values and countOneLen lines of quads are read
 * \return zorStsNullPtrErr, zorStsBadArgErr, zorStsSizeErr as for encoding; zorStsStreamEndErr where the
 *         stream ends, zorStsBadStreamErr where the big values go beyond hufSize; then pDst is undefined
 */
ZOR_API ZorStatus zorsHuffmanDecode_MP3_1u32s(const Zor8u** ppStream, int* pBitOffset,
                                              const Zor8u* pStreamEnd, Zor32s* pDst, int* pNonZeroBound,
                                              const ZorMP3FrameHeader* pFrameHeader,
                                              const ZorMP3SideInfo* pSideInfo, int countOneLen, int hufSize);

/**
 * As zorsHuffmanDecode_MP3_1u32s, with the caller's scale-factor band boundaries for the regions.
 * \param pSfbLong, pSfbShort six rows: MPEG-2 at 22.05, 24, 16 kHz, MPEG-1 at 44.1, 48, 32 kHz
 */
ZOR_API ZorStatus zorsHuffmanDecodeSfb_MP3_1u32s(const Zor8u** ppStream, int* pBitOffset,
                                                 const Zor8u* pStreamEnd, Zor32s* pDst, int* pNonZeroBound,
                                                 const ZorMP3FrameHeader* pFrameHeader,
                                                 const ZorMP3SideInfo* pSideInfo,
                                                 const Zor16s (*pSfbLong)[23], const Zor16s (*pSfbShort)[14],
                                                 int countOneLen, int hufSize);

/**
 * As zorsHuffmanDecodeSfb_MP3_1u32s, with the caller's partition of mixed blocks.
 * \param pMixedBands the number of long bands in a mixed block for id 0 and id 1 (6 and 8 in the standards);
 *        region 0 of a mixed block ends with them
 */
ZOR_API ZorStatus zorsHuffmanDecodeSfbMbp_MP3_1u32s(
    const Zor8u** ppStream, int* pBitOffset, const Zor8u* pStreamEnd, Zor32s* pDst, int* pNonZeroBound,
    const ZorMP3FrameHeader* pFrameHeader, const ZorMP3SideInfo* pSideInfo, const Zor16s (*pSfbLong)[23],
    const Zor16s (*pSfbShort)[14], const Zor16s* pMixedBands, int countOneLen, int hufSize);

/**
 * Joint stereo encoding in place, in the MDCT domain, by mode and modeExtension of the header: M/S (extension
 * bit 1) below the intensity bound, intensity (bit 0) from it on: the left spectrum receives the carrier, the
 * right one 0, the right scale factors the positions. Without bit 0 all bands are M/S. Modes other than joint
 * stereo leave all as it is.
 * \param pScaleFactorR 36 values; entries of bands below the bound are left alone
 * \param pSideInfo two records, left and right; for id 0 the right scalefacCompress says the intensity scale
 * \param pIsSfbBound first band in intensity stereo: of long blocks [0], of short blocks by window. The long
 *        part of a mixed block takes part where all three are 0. The highest band has no scale factor and
 *        shares the position of the one below it; a bound there or above leaves no band to intensity stereo.
 * \return zorStsNullPtrErr, zorStsBadArgErr
 */
ZOR_API ZorStatus zorsJointStereoEncode_MP3_32s_I(Zor32s* pSrcDstXrL, Zor32s* pSrcDstXrR,
                                                  Zor8s* pScaleFactorR, const ZorMP3FrameHeader* pFrameHeader,
                                                  const ZorMP3SideInfo* pSideInfo, const int* pIsSfbBound);

/**
 * Requantisation of one granule in place: power 4/3, gains, scale factors, pre-emphasis; M/S and intensity
 * stereo; short blocks come out in window-interleaved order.
 * \param pSrcDst two channels of 576 lines
 * \param pLen for each channel the lines that may be other than 0, 0 to 576; updated
 * \param pScaleFactor two channels, zorMP3ScaleFactors apart  \param pSideInfo one record per channel
 * \param pBuffer 2304 bytes of work space, 4-byte aligned
 * \return zorStsNullPtrErr; zorStsSizeErr for pLen; zorStsBadArgErr for a header, a side information or (at
 *         least -8206, at most 8206) a line out of range
 */
ZOR_API ZorStatus zorsReQuantize_MP3_32s_I(Zor32s* pSrcDst, int* pLen, const Zor8s* pScaleFactor,
                                           const ZorMP3SideInfo* pSideInfo,
                                           const ZorMP3FrameHeader* pFrameHeader, Zor8u* pBuffer);

/** As zorsReQuantize_MP3_32s_I, with the caller's band boundaries (as for zorsHuffmanDecodeSfb_MP3_1u32s). */
ZOR_API ZorStatus zorsReQuantizeSfb_MP3_32s_I(Zor32s* pSrcDst, int* pLen, const Zor8s* pScaleFactor,
                                              const ZorMP3SideInfo* pSideInfo,
                                              const ZorMP3FrameHeader* pFrameHeader, Zor8u* pBuffer,
                                              const Zor16s (*pSfbLong)[23], const Zor16s (*pSfbShort)[14]);

/** Opaque states of the floating-point filter banks; they live in memory of the caller. */
typedef struct ZorMP3SynthesisState_32f ZorMP3SynthesisState_32f;
typedef struct ZorMP3AnalysisState_32f ZorMP3AnalysisState_32f;

/** Bytes for the state of the synthesis filter. */
ZOR_API ZorStatus zorsSynthesisFilterGetSize_PQMF_MP3_32f(int* pSize);
/** Sets up a state, with silence before it, in pBuffer (any alignment), which has the size told by GetSize.
 */
ZOR_API ZorStatus zorsSynthesisFilterInit_PQMF_MP3_32f(ZorMP3SynthesisState_32f** ppState, Zor8u* pBuffer);

/**
 * Polyphase synthesis of 32 sub-band samples into 32 PCM samples.
 * \param mode distance between PCM samples: 1, or 2 for one channel of an interleaved pair
 * \return zorStsNullPtrErr, zorStsBadArgErr, zorStsContextErr
 */
ZOR_API ZorStatus zorsSynthesisFilter_PQMF_MP3_32f(const Zor32f* pSrc, Zor32f* pDst,
                                                   ZorMP3SynthesisState_32f* pState, int mode);

/** Bytes for the state of the analysis filter. */
ZOR_API ZorStatus zorsAnalysisFilterGetSize_PQMF_MP3_32f(int* pSize);
/** As zorsSynthesisFilterInit_PQMF_MP3_32f. */
ZOR_API ZorStatus zorsAnalysisFilterInit_PQMF_MP3_32f(ZorMP3AnalysisState_32f** ppState, Zor8u* pBuffer);

/** Polyphase analysis of 32 PCM samples, mode apart, into 32 sub-band samples; errors as for synthesis. */
ZOR_API ZorStatus zorsAnalysisFilter_PQMF_MP3_32f(const Zor32f* pSrc, Zor32f* pDst,
                                                  ZorMP3AnalysisState_32f* pState, int mode);

/**
 * Polyphase analysis of two channels of 32 PCM samples.
 * \param pSrc 64 samples: mode 1 one channel after the other, mode 2 interleaved
 * \param pDstLeft, pDstRight 32 sub-band samples each
 * \param pState zorMP3AnalysisState values, zero at the start
 * \return zorStsNullPtrErr, zorStsBadArgErr, zorStsContextErr
 */
ZOR_API ZorStatus zorsAnalysisPQMF_MP3_16s32s(const Zor16s* pSrc, Zor32s* pDstLeft, Zor32s* pDstRight,
                                              Zor16s* pState, int mode);

/**
 * Polyphase synthesis of 32 PCM samples for each of `mode` channels, interleaved where there are two.
 * \param pSrcDst for each channel a ring of 16 rows of 32 values, zero at the start. The caller puts the new
 *        sub-band samples into row *pRow; the call replaces them by their cosine transform.
 * \param pDst 32 x mode samples
 * \param pRow 0 to 15; advanced to the next row
 * \return zorStsNullPtrErr, zorStsBadArgErr
 */
ZOR_API ZorStatus zorsSynthPQMF_MP3_32s16s(Zor32s* pSrcDst, Zor16s* pDst, int* pRow, int mode);

/**
 * Psychoacoustic model II for one frame.
 * \param pSrc PCM, channels zorMP3PcmStride apart; of each channel the frame before and then this frame (1152
 *        samples each for id 1, 576 for id 0)
 * \param pDstPsychInfo [granule][2 channels]
 * \param pSideInfo [granule][2 channels]: windowSwitching, blockType and mixedBlock receive the block
 * decision \param pFrameHeader in joint stereo mode bit 1 of modeExtension receives the M/S decision; then
 * the ratios are those of M and S \param pState zorMP3WorkSize values, zero at the start: for each channel
 * the two last spectra of the lowest lines, the two last thresholds of each partition, the last block type;
 * and work space \return zorStsNullPtrErr, zorStsBadArgErr
 */
ZOR_API ZorStatus zorsPsychoacousticModelTwo_MP3_16s(const Zor16s* pSrc, ZorMP3PsychInfo* pDstPsychInfo,
                                                     ZorMP3SideInfo* pSideInfo,
                                                     ZorMP3FrameHeader* pFrameHeader, Zor32s* pState);

/**
 * Quantises a frame in place so that it fits its bit rate and the noise of each band stays below the model's
 * threshold where the bits suffice.
 * \param pSrcDst [granule][2 channels][576]: lines in the MDCT domain, becoming values in stream order
 * \param pScaleFactor [granule][2 channels][zorMP3ScaleFactors]
 * \param pCountOneLen, pHufSize [granule][2 channels]: lines coded as quads and bits of the Huffman code, the
 *        last two arguments of zorsHuffmanEncode_MP3_32s1u
 * \param pPsychInfo from the model
 * \param pSideInfo block fields are read, all others written
 * \param pReservoir bits in the reservoir, 0 at the start; updated
 * \param pBuffer zorMP3WorkSize values of work space
 * \return zorStsNullPtrErr; zorStsBadArgErr for a header (free format too), a side information or a
 *         reservoir out of range
 */
ZOR_API ZorStatus zorsQuantize_MP3_32s_I(Zor32s* pSrcDst, Zor8s* pScaleFactor, int* pCountOneLen,
                                         int* pHufSize, const ZorMP3PsychInfo* pPsychInfo,
                                         ZorMP3SideInfo* pSideInfo, const ZorMP3FrameHeader* pFrameHeader,
                                         int* pReservoir, Zor32s* pBuffer);

/**
 * Unpacks a frame header, and the check word after it where the header announces one. Reserved values are
 * handed out as they stand.
 * \return zorStsNullPtrErr, zorStsStreamEndErr; zorStsBadStreamErr where there is no sync word
 */
ZOR_API ZorStatus zorsUnpackFrameHeader_MP3(const Zor8u** ppStream, const Zor8u* pStreamEnd,
                                            ZorMP3FrameHeader* pFrameHeader);

/**
 * Unpacks the side information of a frame, for id and mode of the header. Fields that the syntax leaves out
 * are 0, but for the region counts, which have the values that the standard implies.
 * \param pSideInfo [granule][2 channels], for id 0 one granule
 * \param pMainDataBegin, pPrivateBits receive the fields of the frame
 * \param pScfsi receives 4 flags for each channel; 0 for id 0
 * \return zorStsNullPtrErr, zorStsBadArgErr (offset), zorStsStreamEndErr
 */
ZOR_API ZorStatus zorsUnpackSideInfo_MP3(const Zor8u** ppStream, int* pBitOffset, const Zor8u* pStreamEnd,
                                         ZorMP3SideInfo* pSideInfo, int* pMainDataBegin, int* pPrivateBits,
                                         int* pScfsi, const ZorMP3FrameHeader* pFrameHeader);

/**
 * Unpacks the scale factors of one granule of one channel.
 * \param pDst 36 values: long bands; or short bands, three windows each; or the long bands, then the short
 *        bands of a mixed block. Entries without a code become 0.
 * \param pSideInfo for id 0 preflag receives the value that scalefacCompress implies
 * \param pScfsi the 4 flags of the channel: in granule 1 of id 1 the groups flagged stay as pDst has them
 * \return zorStsNullPtrErr; zorStsBadArgErr for an offset, granule, channel or scalefacCompress out of range;
 *         zorStsStreamEndErr
 */
ZOR_API ZorStatus zorsUnpackScaleFactors_MP3_1u8s(const Zor8u** ppStream, int* pBitOffset,
                                                  const Zor8u* pStreamEnd, Zor8s* pDst,
                                                  ZorMP3SideInfo* pSideInfo, const int* pScfsi,
                                                  const ZorMP3FrameHeader* pFrameHeader, int granule,
                                                  int channel);

/* ---- Transforms, prediction, filter banks, vector quantisation ---------------------------------------- */

/**
 * Modified discrete cosine transform of `len` samples to len/2 coefficients and back (ISO/IEC
 * 14496-3, 4.6.11; without window), with M = len/2 and n0 = (M + 1)/2:
 * - forward X[k] = 2 sum over n of x[n] cos(pi/M (n + n0)(k + 1/2)),
 * - inverse x[n] = 2/len sum over k of X[k] cos(pi/M (n + n0)(k + 1/2)).
 *
 * With windows whose squares add up to 1, applied on both sides, the overlapped halves of two frames give
 * back the samples. `len` is 4 times a product of twos, threes and fives, up to 1 << 20.
 */
typedef struct ZorsMDCTFwdState_32f ZorsMDCTFwdState_32f;
typedef struct ZorsMDCTInvState_32f ZorsMDCTInvState_32f;
typedef struct ZorsMDCTFwdState_16s ZorsMDCTFwdState_16s;

/** Makes the tables of one length. \return zorStsNullPtrErr, zorStsSizeErr, zorStsMemAllocErr. */
ZOR_API ZorStatus zorsMDCTFwdInitAlloc_32f(ZorsMDCTFwdState_32f** state, int len);
ZOR_API ZorStatus zorsMDCTInvInitAlloc_32f(ZorsMDCTInvState_32f** state, int len);
ZOR_API ZorStatus zorsMDCTFwdInitAlloc_16s(ZorsMDCTFwdState_16s** state, int len);

/**
 * The bytes of the work buffer of a call, which may stand at any address.
 * \return zorStsNullPtrErr, zorStsContextErr.
 */
ZOR_API ZorStatus zorsMDCTFwdGetBufSize_32f(const ZorsMDCTFwdState_32f* state, int* sizeByte);
ZOR_API ZorStatus zorsMDCTInvGetBufSize_32f(const ZorsMDCTInvState_32f* state, int* sizeByte);
ZOR_API ZorStatus zorsMDCTFwdGetBufSize_16s(const ZorsMDCTFwdState_16s* state, int* sizeByte);

/** Frees the tables. \return zorStsNullPtrErr, zorStsContextErr. */
ZOR_API ZorStatus zorsMDCTFwdFree_32f(ZorsMDCTFwdState_32f* state);
ZOR_API ZorStatus zorsMDCTInvFree_32f(ZorsMDCTInvState_32f* state);
ZOR_API ZorStatus zorsMDCTFwdFree_16s(ZorsMDCTFwdState_16s* state);

/**
 * Forward: len samples at src to len/2 coefficients at dst. The _I forms work in srcDst, whose first len/2
 * elements hold the coefficients. Inverse: len/2 coefficients to len samples; _I the same in srcDst. dst must
 * be src or apart from it. \return zorStsNullPtrErr, zorStsContextErr.
 */
ZOR_API ZorStatus zorsMDCTFwd_32f(const Zor32f* src, Zor32f* dst, const ZorsMDCTFwdState_32f* state,
                                  Zor8u* buffer);
ZOR_API ZorStatus zorsMDCTFwd_32f_I(Zor32f* srcDst, const ZorsMDCTFwdState_32f* state, Zor8u* buffer);
ZOR_API ZorStatus zorsMDCTInv_32f(const Zor32f* src, Zor32f* dst, const ZorsMDCTInvState_32f* state,
                                  Zor8u* buffer);
ZOR_API ZorStatus zorsMDCTInv_32f_I(Zor32f* srcDst, const ZorsMDCTInvState_32f* state, Zor8u* buffer);

/**
 * Forward in 16 bits: the coefficients times 2^-scaleFactor, rounded to nearest and saturated.
 * \return zorStsNullPtrErr, zorStsContextErr; zorStsScaleRangeErr for a scale factor outside -31 to 31.
 */
ZOR_API ZorStatus zorsMDCTFwd_16s_Sfs(const Zor16s* src, Zor16s* dst, const ZorsMDCTFwdState_16s* state,
                                      int scaleFactor, Zor8u* buffer);

/**
 * Frequency-domain prediction of AAC main profile (ISO/IEC 13818-7, 8.3; 14496-3, 4.6.7): for each spectral
 * line a backward-adaptive lattice predictor of second order, adapted by the reconstructed values of past
 * frames, with its state and the predicted value kept to the leading 16 bits of a float as the standard asks.
 */
typedef struct ZorsFDPState_32f ZorsFDPState_32f;

/** Makes the predictors of `len` lines, reset. \return zorStsNullPtrErr, zorStsSizeErr, zorStsMemAllocErr. */
ZOR_API ZorStatus zorsFDPInitAlloc_32f(ZorsFDPState_32f** state, int len);
/** \return zorStsNullPtrErr, zorStsContextErr. */
ZOR_API ZorStatus zorsFDPFree_32f(ZorsFDPState_32f* state);

/** Resets all predictors. \return zorStsNullPtrErr, zorStsContextErr. */
ZOR_API ZorStatus zorsFDPReset_32f(ZorsFDPState_32f* state);
/**
 * Resets the predictors of lines groupNumber - 1, groupNumber - 1 + step, and so on. The groups of the
 * standard are the numbers 1 to 30 with step 30. \return zorStsNullPtrErr, zorStsContextErr; zorStsBadArgErr
 * for a number or step below 1 or beyond the length.
 */
ZOR_API ZorStatus zorsFDPResetGroup_32f(int groupNumber, int step, ZorsFDPState_32f* state);

/**
 * One frame. Forward writes prediction errors in the bands that use prediction and the spectrum elsewhere;
 * inverse turns them back. Both adapt every predictor by the same reconstructed spectrum, so that the inverse
 * stays in step. \param bandOffset  numBands + 1 line numbers, rising from 0; lines from the last one on are
 * not predicted \param predictionUsed  for each band 0 or not 0 \return zorStsNullPtrErr, zorStsContextErr;
 * zorStsSizeErr for numBands below 1; zorStsBadArgErr for offsets that fall, are negative or beyond the
 * length.
 */
ZOR_API ZorStatus zorsFDPFwd_32f(const Zor32f* src, Zor32f* dst, const int* bandOffset,
                                 const Zor8u* predictionUsed, int numBands, ZorsFDPState_32f* state);
ZOR_API ZorStatus zorsFDPInv_32f_I(Zor32f* srcDst, const int* bandOffset, const Zor8u* predictionUsed,
                                   int numBands, ZorsFDPState_32f* state);

/**
 * The 32-band synthesis filter of DTS coherent acoustics (ETSI TS 102 114, 512 taps). A sine of amplitude a
 * in the middle of a band comes from sub-band samples of amplitude a (synthesis factor 64 on the printed
 * taps).
 */
typedef struct ZorsSynthesisFilterState_DTS_32f ZorsSynthesisFilterState_DTS_32f;

/** \return zorStsNullPtrErr. */
ZOR_API ZorStatus zorsSynthesisFilterGetSize_DTS_32f(int* sizeByte);
/** Sets a filter up, with an empty delay line, in memory at any address. \return zorStsNullPtrErr. */
ZOR_API ZorStatus zorsSynthesisFilterInit_DTS_32f(ZorsSynthesisFilterState_DTS_32f** state, Zor8u* memory);
/**
 * 32 sub-band samples at src to 32 samples at dst.
 * \param mode  which taps: 1 those for perfect reconstruction, 0 the others (the stream's FILTS)
 * \return zorStsNullPtrErr, zorStsContextErr; zorStsBadArgErr for another mode.
 */
ZOR_API ZorStatus zorsSynthesisFilter_DTS_32f(const Zor32f* src, Zor32f* dst,
                                              ZorsSynthesisFilterState_DTS_32f* state, int mode);

/*
 * Filter banks of spectral band replication (ISO/IEC 14496-3, 4.6.18): analysis of 32 bands, synthesis of 64
 * and down-sampled synthesis of 32 ("Down"). "C" is the complex bank, "R" the real one (low power). Band
 * signals are lists of lines ("D2L"), a line of 32 or 64 bands for each time slot; 32f lines hold real and
 * imaginary parts apart, 32fc lines pairs. With the window c[], the samples s[] back from the newest one and
 * e(x) = exp(jx):
 * - analysis of M = 32: u[n] = sum over j of c[2n + 128j] s[n + 64j],
 *   X[k] = 2 sum over n of u[n] e(pi/M (k + 1/2)(n + a));
 * - synthesis of M = 64 or 32: v[n] = 1/64 sum over k of re X[k] e(pi/M (k + 1/2)(n + b)), n below 2M, then
 *   windowed and overlapped over ten slots.
 *
 * Phases of the complex banks: a = -1/4, b = -127.5 for M = 64 and -63.75 for M = 32. The real banks have the
 * cosine instead of e, a = -48, b = -M/2 and the factor 1/32 instead of 1/64.
 */
typedef struct ZorsAnalysisFilterState_SBR_RToC_32f ZorsAnalysisFilterState_SBR_RToC_32f;
typedef struct ZorsAnalysisFilterState_SBR_RToC_32f32fc ZorsAnalysisFilterState_SBR_RToC_32f32fc;
typedef struct ZorsAnalysisFilterState_SBR_RToR_32f ZorsAnalysisFilterState_SBR_RToR_32f;
typedef struct ZorsSynthesisFilterState_SBR_CToR_32f ZorsSynthesisFilterState_SBR_CToR_32f;
typedef struct ZorsSynthesisFilterState_SBR_CToR_32fc32f ZorsSynthesisFilterState_SBR_CToR_32fc32f;
typedef struct ZorsSynthesisFilterState_SBR_RToR_32f ZorsSynthesisFilterState_SBR_RToR_32f;
typedef struct ZorsSynthesisDownFilterState_SBR_CToR_32f ZorsSynthesisDownFilterState_SBR_CToR_32f;
typedef struct ZorsSynthesisDownFilterState_SBR_CToR_32fc32f ZorsSynthesisDownFilterState_SBR_CToR_32fc32f;
typedef struct ZorsSynthesisDownFilterState_SBR_RToR_32f ZorsSynthesisDownFilterState_SBR_RToR_32f;

/** The bytes of a filter's state. \return zorStsNullPtrErr. */
ZOR_API ZorStatus zorsAnalysisFilterGetSize_SBR_RToC_32f(int* sizeByte);
ZOR_API ZorStatus zorsAnalysisFilterGetSize_SBR_RToC_32f32fc(int* sizeByte);
ZOR_API ZorStatus zorsAnalysisFilterGetSize_SBR_RToR_32f(int* sizeByte);
ZOR_API ZorStatus zorsSynthesisFilterGetSize_SBR_CToR_32f(int* sizeByte);
ZOR_API ZorStatus zorsSynthesisFilterGetSize_SBR_CToR_32fc32f(int* sizeByte);
ZOR_API ZorStatus zorsSynthesisFilterGetSize_SBR_RToR_32f(int* sizeByte);
ZOR_API ZorStatus zorsSynthesisDownFilterGetSize_SBR_CToR_32f(int* sizeByte);
ZOR_API ZorStatus zorsSynthesisDownFilterGetSize_SBR_CToR_32fc32f(int* sizeByte);
ZOR_API ZorStatus zorsSynthesisDownFilterGetSize_SBR_RToR_32f(int* sizeByte);

/** Sets a filter up, with an empty delay line, in memory at any address. \return zorStsNullPtrErr. */
ZOR_API ZorStatus zorsAnalysisFilterInit_SBR_RToC_32f(ZorsAnalysisFilterState_SBR_RToC_32f** state,
                                                      Zor8u* memory);
ZOR_API ZorStatus zorsAnalysisFilterInit_SBR_RToC_32f32fc(ZorsAnalysisFilterState_SBR_RToC_32f32fc** state,
                                                          Zor8u* memory);
ZOR_API ZorStatus zorsAnalysisFilterInit_SBR_RToR_32f(ZorsAnalysisFilterState_SBR_RToR_32f** state,
                                                      Zor8u* memory);
ZOR_API ZorStatus zorsSynthesisFilterInit_SBR_CToR_32f(ZorsSynthesisFilterState_SBR_CToR_32f** state,
                                                       Zor8u* memory);
ZOR_API ZorStatus zorsSynthesisFilterInit_SBR_CToR_32fc32f(ZorsSynthesisFilterState_SBR_CToR_32fc32f** state,
                                                           Zor8u* memory);
ZOR_API ZorStatus zorsSynthesisFilterInit_SBR_RToR_32f(ZorsSynthesisFilterState_SBR_RToR_32f** state,
                                                       Zor8u* memory);
ZOR_API ZorStatus zorsSynthesisDownFilterInit_SBR_CToR_32f(ZorsSynthesisDownFilterState_SBR_CToR_32f** state,
                                                           Zor8u* memory);
ZOR_API ZorStatus zorsSynthesisDownFilterInit_SBR_CToR_32fc32f(
    ZorsSynthesisDownFilterState_SBR_CToR_32fc32f** state, Zor8u* memory);
ZOR_API ZorStatus zorsSynthesisDownFilterInit_SBR_RToR_32f(ZorsSynthesisDownFilterState_SBR_RToR_32f** state,
                                                           Zor8u* memory);

/**
 * Analyses 32 numSlots samples into numSlots lines of 32 bands.
 * \return zorStsNullPtrErr, also for a null line; zorStsSizeErr for numSlots below 1; zorStsContextErr.
 */
ZOR_API ZorStatus zorsAnalysisFilter_SBR_RToC_32f_D2L(const Zor32f* src, Zor32f* const dstRe[],
                                                      Zor32f* const dstIm[], int numSlots,
                                                      ZorsAnalysisFilterState_SBR_RToC_32f* state);
ZOR_API ZorStatus zorsAnalysisFilter_SBR_RToC_32f32fc_D2L(const Zor32f* src, Zor32fc* const dst[],
                                                          int numSlots,
                                                          ZorsAnalysisFilterState_SBR_RToC_32f32fc* state);
ZOR_API ZorStatus zorsAnalysisFilter_SBR_RToR_32f_D2L(const Zor32f* src, Zor32f* const dst[], int numSlots,
                                                      ZorsAnalysisFilterState_SBR_RToR_32f* state);

/**
 * Synthesises numSlots lines of 64 bands to 64 numSlots samples ("Down": lines of 32 bands to 32 numSlots
 * samples). \return zorStsNullPtrErr, also for a null line; zorStsSizeErr for numSlots below 1;
 * zorStsContextErr.
 */
ZOR_API ZorStatus zorsSynthesisFilter_SBR_CToR_32f_D2L(const Zor32f* const srcRe[],
                                                       const Zor32f* const srcIm[], Zor32f* dst, int numSlots,
                                                       ZorsSynthesisFilterState_SBR_CToR_32f* state);
ZOR_API ZorStatus zorsSynthesisFilter_SBR_CToR_32fc32f_D2L(const Zor32fc* const src[], Zor32f* dst,
                                                           int numSlots,
                                                           ZorsSynthesisFilterState_SBR_CToR_32fc32f* state);
ZOR_API ZorStatus zorsSynthesisFilter_SBR_RToR_32f_D2L(const Zor32f* const src[], Zor32f* dst, int numSlots,
                                                       ZorsSynthesisFilterState_SBR_RToR_32f* state);
ZOR_API ZorStatus zorsSynthesisDownFilter_SBR_CToR_32f_D2L(const Zor32f* const srcRe[],
                                                           const Zor32f* const srcIm[], Zor32f* dst,
                                                           int numSlots,
                                                           ZorsSynthesisDownFilterState_SBR_CToR_32f* state);
ZOR_API ZorStatus
zorsSynthesisDownFilter_SBR_CToR_32fc32f_D2L(const Zor32fc* const src[], Zor32f* dst, int numSlots,
                                             ZorsSynthesisDownFilterState_SBR_CToR_32fc32f* state);
ZOR_API ZorStatus zorsSynthesisDownFilter_SBR_RToR_32f_D2L(const Zor32f* const src[], Zor32f* dst,
                                                           int numSlots,
                                                           ZorsSynthesisDownFilterState_SBR_RToR_32f* state);

/**
 * Prediction coefficients of SBR inverse filtering (ISO/IEC 14496-3, 4.6.18.6.2) for bands 0 to numBands - 1
 * by the covariance method over `len` slots, the cross term relaxed by 1/(1 + 1e-6): x[n] is predicted as
 * -alpha0 x[n-1] - alpha1 x[n-2]. Both coefficients are 0 where one of them reaches magnitude 4; alpha1 is 0
 * where the equations are singular. \param src  len + 2 lines, a slot each, the two slots before the first
 * one leading \return zorStsNullPtrErr, also for a null line; zorStsSizeErr for numBands or len below 1.
 */
ZOR_API ZorStatus zorsPredictCoef_SBR_R_32f_D2L(const Zor32f* const src[], Zor32f* alpha0, Zor32f* alpha1,
                                                int numBands, int len);
ZOR_API ZorStatus zorsPredictCoef_SBR_C_32f_D2L(const Zor32f* const srcRe[], const Zor32f* const srcIm[],
                                                Zor32f* alpha0Re, Zor32f* alpha0Im, Zor32f* alpha1Re,
                                                Zor32f* alpha1Im, int numBands, int len);
ZOR_API ZorStatus zorsPredictCoef_SBR_C_32fc_D2L(const Zor32fc* const src[], Zor32fc* alpha0, Zor32fc* alpha1,
                                                 int numBands, int len);

/**
 * Vector quantisation in the manner of the transform-domain weighted interleave quantiser (ISO/IEC 14496-3,
 * TwinVQ): a signal is divided into sub-vectors, which lie one after another, and each is coded by the mean
 * of two code vectors, one of each of two books, with a polarity (sign) each. A code is the row of the book
 * for positive and the row plus the number of rows for negative polarity.
 */
typedef struct ZorsVQCodeBook_32f ZorsVQCodeBook_32f;

/**
 * Makes a code book of `rows` code vectors of `step` elements; sub-vectors use as many elements as they have.
 * \return zorStsNullPtrErr; zorStsSizeErr for step outside 1 to 64 or rows outside 1 to 1024;
 * zorStsMemAllocErr.
 */
ZOR_API ZorStatus zorsVQCodeBookInitAlloc_32f(ZorsVQCodeBook_32f** book, const Zor32f* table, int step,
                                              int rows);
/** \return zorStsNullPtrErr, zorStsContextErr. */
ZOR_API ZorStatus zorsVQCodeBookFree_32f(ZorsVQCodeBook_32f* book);

/*
 * Statuses of the four below: zorStsNullPtrErr, zorStsContextErr; zorStsSizeErr for fewer than 1 division or
 * candidate, more candidates than rows, or a sub-vector length outside 1 to the book's step; zorStsBadArgErr
 * for a code that the book does not have.
 */

/**
 * The numCandidates best codes of one book for each division by the weighted distance
 * sum over i of weight[i] (src[i] - sign code[i])^2, nearest first, equal ones in the order of their rows.
 * \param polarity  for each division: not 0 where the sign may be chosen, 0 where it is positive
 * \param index  numCandidates codes for each division
 */
ZOR_API ZorStatus zorsVQPreliminarySelect_32f(const Zor32f* src, const Zor32f* weight, const int* length,
                                              const int* polarity, int numDivisions, int* index,
                                              int numCandidates, const ZorsVQCodeBook_32f* book);

/**
 * The best pair of candidates for each division by the weighted distance to the mean of the two signed code
 * vectors; the first such pair in the order of the lists.
 */
ZOR_API ZorStatus zorsVQMainSelect_32f(const Zor32f* src, const Zor32f* weight, const int* length,
                                       int numDivisions, const int* candidates0, const int* candidates1,
                                       int numCandidates, int* index0, int* index1,
                                       const ZorsVQCodeBook_32f* book0, const ZorsVQCodeBook_32f* book1);

/** The best code of a single book for each division, by the distance of the preliminary selection. */
ZOR_API ZorStatus zorsVQIndexSelect_32f(const Zor32f* src, const Zor32f* weight, const int* length,
                                        const int* polarity, int numDivisions, int* index,
                                        const ZorsVQCodeBook_32f* book);

/** The mean of the two signed code vectors of each division. */
ZOR_API ZorStatus zorsVQReconstruction_32f(const int* index0, const int* index1, const int* length,
                                           int numDivisions, Zor32f* dst, const ZorsVQCodeBook_32f* book0,
                                           const ZorsVQCodeBook_32f* book1);

#ifdef __cplusplus
}
#endif

#endif
