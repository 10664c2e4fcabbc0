/** \file
 * The building blocks of AAC (ISO/IEC 13818-7, 14496-3): elements, noiseless coding, quantisation, stereo and
 * noise tools, filter banks, prediction.
 */
#ifndef ZORAC_AAC_H
#define ZORAC_AAC_H

#include "zortypes.h"

#ifdef __cplusplus
extern "C" {
#endif

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
 * \param srcDst     the spectrum: 1024 lines, or 8 windows of 128 lines
 * \param numFilt    per window: number of filters, 0 to 3 (long) or 0 to 1 (short)
 * \param regionLen  per filter: length of its region in bands
 * \param order      per filter: order, up to 20 (long windows of the Main profile), 12 (long) or 7 (short)
 * \param coefRes    per window: resolution of the coefficients, 3 or 4 bits
 * \param coef       the coefficients of all filters one after another, `order` for each filter. The low
 *                    `resolution` bits count, as a two's complement number
 * \param direction  per filter: 0 upward in frequency, 1 downward
 * \param maxSfb      number of bands sent
 * \param profile     zorAacMain, zorAacLC or zorAacLTP
 * \param samplingRateIndex 0 to 11
 * \param winLen      window length, 1024 or 128
 * \return zorStsNullPtrErr, zorStsSizeErr (winLen, maxSfb), zorStsBadArgErr (any other)
 */
ZOR_API ZorStatus zorsDecodeTNS_AAC_32s_I(Zor32s* srcDst, const int* numFilt, const int* regionLen,
                                          const int* order, const int* coefRes, const Zor8s* coef,
                                          const int* direction, int maxSfb, int profile,
                                          int samplingRateIndex, int winLen);
/** \copydoc zorsDecodeTNS_AAC_32s_I */
ZOR_API ZorStatus zorsEncodeTNS_AAC_32s_I(Zor32s* srcDst, const int* numFilt, const int* regionLen,
                                          const int* order, const int* coefRes, const Zor8s* coef,
                                          const int* direction, int maxSfb, int profile,
                                          int samplingRateIndex, int winLen);

/*
 * Bit streams: bitStream and bitOffset (0 to 7, from the most significant bit) are the position; they
 * advance. bitStreamEnd is one past the last byte. A call that fails leaves the position as it was.
 *
 * Spectra are integers in the standard's unit. In "group order" the windows of a group are interleaved band
 * by band, as the stream sends them: group, band, window, line. In "window order" each window has its lines
 * in one piece, window after window. With groups of one window the two are the same.
 *
 * The windows of a frame are described by numWinGrp and winGrpLen (the windows of each group: 1 in all, or 8
 * with winLen 128), maxSfb (bands sent), samplingRateIndex (0 to 11) and winLen (1024 or 128). Tables "per
 * band" have numWinGrp * maxSfb elements, group after group. Functions that take these arguments return
 * zorStsNullPtrErr, zorStsSizeErr (winLen, maxSfb, groups) and zorStsBadArgErr (samplingRateIndex).
 */

/**
 * Data-stream element, ISO/IEC 14496-3 4.4.2.1 data_stream_element, behind its element identifier.
 * \param elementTag  the element's instance tag, 0 to 15
 * \param count       number of bytes, 0 to 510
 * \param dst         the bytes
 * \param dstSize      room in dst
 * \return zorStsNullPtrErr, zorStsBadArgErr (bit offset), zorStsSizeErr (more bytes than room; nothing is
 *         copied), zorStsStreamEndErr
 */
ZOR_API ZorStatus zorsDecodeDatStrElt_AAC(const Zor8u** bitStream, int* bitOffset, const Zor8u* bitStreamEnd,
                                          int* elementTag, int* count, Zor8u* dst, int dstSize);
/** Fill element: the payload's bytes, 0 to 269, extension type included; else as zorsDecodeDatStrElt_AAC. */
ZOR_API ZorStatus zorsDecodeFillElt_AAC(const Zor8u** bitStream, int* bitOffset, const Zor8u* bitStreamEnd,
                                        int* count, Zor8u* dst, int dstSize);

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
 * \param channel       in and out as its fields say
 * \param dstScaleFactor per band: the scale factor (0 to 255), the intensity position or the noise energy
 * \param dstSpectrum   1024 quantised lines in group order, pulses added; 0 where nothing was sent
 * \param dstSfbCb      per band: its code book, 0 to 15
 * \param dstTnsCoef    60 elements: the coefficients of the filters one after another
 * \return zorStsNullPtrErr, zorStsBadArgErr, zorStsSizeErr (a field of channel out of its range),
 *         zorStsStreamEndErr, zorStsBadStreamErr; with the last two the outputs may have been written
 */
ZOR_API ZorStatus zorsNoiselessDecoder_LC_AAC(const Zor8u** bitStream, int* bitOffset,
                                              const Zor8u* bitStreamEnd, ZorAacChannel* channel,
                                              Zor16s* dstScaleFactor, Zor32s* dstSpectrum, Zor8u* dstSfbCb,
                                              Zor8s* dstTnsCoef);
/**
 * The same for every profile, and for the layers of a scalable stream.
 * \param profile    zorAacMain, zorAacLC or zorAacLTP: the largest filter order follows from it
 * \param scaleFlag  1 in a layer of a scalable stream, which has no pulses and filters here
 */
ZOR_API ZorStatus zorsNoiselessDecode_AAC(const Zor8u** bitStream, int* bitOffset, const Zor8u* bitStreamEnd,
                                          ZorAacChannel* channel, Zor16s* dstScaleFactor, Zor32s* dstSpectrum,
                                          Zor8u* dstSfbCb, Zor8s* dstTnsCoef, int profile, int scaleFlag);

/**
 * Inverse quantisation in place, group order: sign(q) |q|^(4/3) 2^((scale factor - 100) / 4), rounded and
 * saturated, to within 2^-22 of the value. Bands with code book 0 or one of noise and intensity, and lines
 * above maxSfb, become 0. Magnitudes above 8191 count as 8191.
 */
ZOR_API ZorStatus zorsQuantInv_AAC_32s_I(Zor32s* srcDst, const Zor16s* scaleFactor, const Zor8u* sfbCb,
                                         int numWinGrp, const int* winGrpLen, int maxSfb,
                                         int samplingRateIndex, int winLen);

/** From group order to window order; lines above maxSfb become 0. src and dst are two vectors of 1024. */
ZOR_API ZorStatus zorsDeinterleaveSpectrum_AAC_32s(const Zor32s* src, Zor32s* dst, int numWinGrp,
                                                   const int* winGrpLen, int maxSfb, int samplingRateIndex,
                                                   int winLen);

/**
 * M/S stereo in place, window order: (l, r) becomes (l + r, l - r), saturated, in the bands in use.
 * \param msMaskPresent  0 no band, 1 those of msUsed, 2 all bands
 * \param msUsed        per band: not 0 where the band is coded as M/S; may be null unless msMaskPresent is 1
 * \param sfbCb         per band: the right channel's code book; bands of noise and intensity are left alone.
 *                       A band in which only the left channel has noise cannot be told by it: use
 *                       zorsDecodeMsStereoPair_AAC_32s_I for streams with noise substitution
 */
ZOR_API ZorStatus zorsDecodeMsStereo_AAC_32s_I(Zor32s* srcDstL, Zor32s* srcDstR, int msMaskPresent,
                                               const Zor8u* msUsed, const Zor8u* sfbCb, int numWinGrp,
                                               const int* winGrpLen, int maxSfb, int samplingRateIndex,
                                               int winLen);
/**
 * The same with the code books of both channels: bands in which either has noise, or the right one intensity,
 * are left alone (ISO/IEC 14496-3, 4.6.8.1 and 4.6.13).
 */
ZOR_API ZorStatus zorsDecodeMsStereoPair_AAC_32s_I(Zor32s* srcDstL, Zor32s* srcDstR, int msMaskPresent,
                                                   const Zor8u* msUsed, const Zor8u* sfbCbL,
                                                   const Zor8u* sfbCbR, int numWinGrp, const int* winGrpLen,
                                                   int maxSfb, int samplingRateIndex, int winLen);
/**
 * Intensity stereo, window order: in the bands whose code book (of the right channel) is 14 or 15 the right
 * channel is the left one times 2^(-position / 4), negated for book 14; where msMaskPresent is 1 and the band
 * is marked in msUsed, the sign is turned once more. Other bands stay as they are.
 * \param scaleFactor  per band: the intensity position
 */
ZOR_API ZorStatus zorsDecodeIsStereo_AAC_32s(const Zor32s* srcL, Zor32s* dstR, const Zor16s* scaleFactor,
                                             int msMaskPresent, const Zor8u* msUsed, const Zor8u* sfbCb,
                                             int numWinGrp, const int* winGrpLen, int maxSfb,
                                             int samplingRateIndex, int winLen);
/**
 * Perceptual noise substitution, window order: the bands with code book 13 get noise whose energy in each
 * window is 2^(noise energy / 2).
 *
 * \param scaleFactor per band: the noise energy
 * \param randomState state of the generator; any number at first
 * \param bandState   per band: where the generator stood at the band's start, or in bands without noise a
 *                     state apart from these. The first channel of a pair writes all of it
 * \param second       1 for the second channel of a pair: in the bands marked in msUsed it repeats the first
 *                     channel's noise, or makes noise of its own where the first one has none. msUsed may be
 *                     null when it is 0
 */
ZOR_API ZorStatus zorsDecodePNS_AAC_32s(Zor32s* srcDst, const Zor16s* scaleFactor, const Zor8u* sfbCb,
                                        Zor32u* randomState, Zor32s* bandState, int second,
                                        const Zor8u* msUsed, int numWinGrp, const int* winGrpLen, int maxSfb,
                                        int samplingRateIndex, int winLen);

/*
 * Transforms. winShape and prevWinShape are the window shapes of this and of the previous frame: 0 sine, 1
 * Kaiser-Bessel derived. buffer is work space of 2048 elements. They return zorStsNullPtrErr and
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
 * \param src           the new samples
 * \param srcDstOverlap the samples before them, as many; replaced by the new ones
 */
ZOR_API ZorStatus zorsMDCTFwd_AAC_32s(const Zor32s* src, Zor32s* dst, Zor32s* srcDstOverlap, int winSequence,
                                      int winShape, int prevWinShape, Zor32s* buffer);
/**
 * Inverse MDCT with windowing, overlap and add: 1024 lines (in window order) to 1024 samples, rounded and
 * saturated to 16 bits. It undoes zorsMDCTFwd_AAC_32s.
 * \param srcDstOverlap 1024 elements, zeros at first: what this frame adds to the next one, with 8 bits
 *                       behind the binary point
 */
ZOR_API ZorStatus zorsMDCTInv_AAC_32s16s(const Zor32s* src, Zor16s* dst, Zor32s* srcDstOverlap,
                                         int winSequence, int winShape, int prevWinShape, Zor32s* buffer);

/**
 * Long-term prediction, ISO/IEC 14496-3 4.6.7: predicts the frame's 2048 samples from the past and transforms
 * them.
 * \param src   4096 samples; the frame begins at the 2049th. Before it stand the decoded samples, from it on
 *               the aliased half that is to be overlapped, then zeros
 * \param dst   2048 elements: the predicted spectrum in the first 1024 (window order), then work space
 * \param lag    0 to 2047: how far back the prediction looks
 * \param coefIndex 0 to 7: index of the gain
 * \return zorStsNullPtrErr, zorStsBadArgErr
 */
ZOR_API ZorStatus zorsLongTermPredict_AAC_32s(const Zor32s* src, Zor32s* dst, int lag, int coefIndex,
                                              int winSequence, int winShape, int prevWinShape);
/**
 * Adds the predicted spectrum in the bands that use it, saturated; window order, up to 40 bands of long and 8
 * of short windows. \param src      the predicted spectrum, 1024 lines \param srcDst   the spectrum, 1024
 * lines \param ltpFlag  maxSfb + 1 elements: not 0 where prediction is on at all, then for each band
 */
ZOR_API ZorStatus zorsLongTermReconstruct_AAC_32s(const Zor32s* src, Zor32s* srcDst, const Zor8u* ltpFlag,
                                                  int winSequence, int maxSfb, int samplingRateIndex);

/**
 * Frequency-domain prediction of AAC main profile (ISO/IEC 13818-7, 8.3; 14496-3, 4.6.7): for each spectral
 * line a backward-adaptive lattice predictor of second order, adapted by the reconstructed values of past
 * frames, with its state and the predicted value kept to the leading 16 bits of a float as the standard asks.
 */
typedef struct ZorsFDPState_32f ZorsFDPState_32f;

/** Makes the predictors of `length` lines, reset. \return zorStsNullPtrErr, zorStsSizeErr, zorStsMemAllocErr.
 */
ZOR_API ZorStatus zorsFDPInitAlloc_32f(ZorsFDPState_32f** state, int length);
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

#ifdef __cplusplus
}
#endif

#endif
