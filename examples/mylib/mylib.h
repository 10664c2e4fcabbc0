/** \file
 * The library to measure: one function with a status.
 */
#ifndef MYLIB_H
#define MYLIB_H

/**
 * data[i] *= factor, in place.
 * \return 0; -1 for a null pointer or a length below 1
 */
extern "C" int mylibScale_32f_I(float factor, float* data, int length);

#endif
