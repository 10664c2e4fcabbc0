/** \file
 * The statistics of a comparison, as pure functions.
 */
#ifndef STATISTICS_H
#define STATISTICS_H

#include <span>
#include <vector>

/** A location with its standard error and the degrees of freedom behind the error (infinite for a stated
 * error). */
struct Estimate {
    double location = 0;
    double error = 0;
    double freedom = 0;
};

/**
 * The mean of the smaller half of the values, at least two, with the standard error from the winsorised
 * variance (Tukey and McLaughlin 1963, for trimming on one side): other work on the machine only ever adds
 * time, often to half of the runs at once, so the larger half tells of the machine and not of the function.
 * \param values  at least two
 */
Estimate lowerMean(std::span<const double> values);

/** Distribution function of Student's t with `freedom` degrees of freedom (normal for infinitely many). */
double studentCdf(double t, double freedom);

/** The t that Student's distribution stays below with probability p, 0 < p < 1. */
double studentQuantile(double p, double freedom);

/** Two estimates' difference (second - first), its standard error and the freedom after Welch and
 * Satterthwaite. */
Estimate difference(const Estimate& first, const Estimate& second);

/** Probability of a difference this far from 0 or farther, either way, where there is none. */
double pValue(const Estimate& difference);

/** Half the width of the interval that covers the true difference with probability `confidence`. */
double halfWidth(const Estimate& difference, double confidence);

/**
 * Benjamini and Hochberg 1995: p values adjusted for being many, in the order given. Rows whose adjusted
 * value is at most q hold a share q of false alarms at most; where nothing differs at all, an alarm comes up
 * with probability q.
 */
std::vector<double> adjustedP(std::span<const double> p);

/** Geometric mean; 1 for no values. All values above 0. */
double geometricMean(std::span<const double> values);

#endif
