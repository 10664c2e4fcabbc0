/** \file
 * Statistics of repeated measurements. Pure functions of their arguments.
 */
#ifndef BXSTATISTICS_H
#define BXSTATISTICS_H

#include <vector>

/** A range of values, in the unit of what it was taken from. */
struct bxInterval {
    double low = 0;
    double high = 0;

    bool contains(double value) const { return low <= value && value <= high; }
    double halfWidth() const { return (high - low) / 2; }
};

/** Difference of two values relative to their mean. \param a,b  their sum is not 0 */
double bxDifference(double a, double b);

/** Largest difference from the mean, relative to it; 0 for no values, 1 where their mean is not above 0. */
double bxLargestDeviation(const std::vector<double>& values);

/** The middle value, or the mean of the two in the middle; 0 for no values. */
double bxMedian(std::vector<double> values);

/** Medians of each `size` neighbouring values; a rest of fewer is left out. \param size above 0 */
std::vector<double> bxBatchMedians(const std::vector<double>& values, int size);

/**
 * Confidence interval of the median of what the values were drawn from, whatever its distribution: two order
 * statistics whose confidence is the binomial one, interpolated between neighbours to meet the confidence
 * that was asked for (Hettmansperger and Sheather, "Confidence intervals based on interpolated order
 * statistics", 1986). Five values cannot give 95 %: their whole range holds the median with 1 - 2^(1 - n),
 * and is returned. \param confidence above 0, below 1 \return both 0 for no values
 */
bxInterval bxMedianInterval(std::vector<double> values, double confidence = 0.95);

#endif
