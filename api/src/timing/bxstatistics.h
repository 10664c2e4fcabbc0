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

/**
 * Correlation of neighbouring values, as far as they let it be believed: estimated from their ranks
 * (Spearman, and from there that of normal variates, 2 sin(pi r / 6)), freed of the bias of short series
 * (Kendall: it is low by (1 + 3 rho) / n), and raised by one standard error. From 0 to 0.97; 0 for values
 * that are all equal. \param values  at least 4
 */
double bxNeighbourCorrelation(const std::vector<double>& values);

/**
 * How many of `count` neighbouring values tell as much of their median as one that does not depend on others,
 * where the correlation of values decays by the same factor from each to the next. Of the median, because the
 * signs of the differences from it count: they are correlated by 2 / pi asin(rho).
 */
double bxCorrelationTime(double correlation, int count);

/**
 * By how much the interval of a median widens beside that of independent values; more than by the root of the
 * correlation time, since values that depend on each other also spread less than what they were drawn from.
 */
double bxWidening(double correlationTime, int count);

/**
 * Confidence interval of the median of what the values were drawn from, whatever its distribution: two order
 * statistics whose confidence is the binomial one, interpolated between neighbours to meet the confidence
 * that was asked for (Hettmansperger and Sheather, "Confidence intervals based on interpolated order
 * statistics", 1986). Five values cannot give 95 %: their whole range holds the median with 1 - 2^(1 - n),
 * and is returned. \param confidence above 0, below 1 \return both 0 for no values
 */
bxInterval bxMedianInterval(std::vector<double> values, double confidence = 0.95);

#endif
