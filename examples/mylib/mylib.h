/** \file
 * The library to measure.
 */
#ifndef MYLIB_H
#define MYLIB_H

extern "C" {

/**
 * data[i] *= factor, in place.
 * \return 0; -1 for a null pointer or a length below 1
 */
int mylibScale_32f_I(float factor, float* data, int length);

/** A direct-form filter with its last samples. */
struct MylibFir;
/** \return null where there are no taps or no memory */
MylibFir* mylibFirCreate(const float* taps, int count);
void mylibFirDestroy(MylibFir* filter);
/**
 * y[i] is the sum of taps[k] * x[i - k]; samples before x are those of the call before.
 * \return 0; -1 for a null pointer or a length below 1
 */
int mylibFirExecute_32f(MylibFir* filter, const float* x, float* y, int length);
}

#endif
