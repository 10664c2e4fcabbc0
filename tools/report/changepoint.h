/** \file
 * Levels of a series of figures and the steps between them, in the presence of outliers.
 */
#ifndef CHANGEPOINT_H
#define CHANGEPOINT_H

#include <cstddef>
#include <span>
#include <vector>

/** How strict the search for steps is. The defaults are those of docs/history.md, where their worth is
 * measured. */
struct StepRules {
    double penalty = 15;       /**< what a level has to save, in squares of the noise's standard deviation */
    double outlier = 3;        /**< deviations from the level, in standard deviations, count up to this */
    std::size_t shortest = 5;  /**< figures that a level needs */
    double least = 0.015;      /**< neighbouring levels that differ by less are one */
    double leastNoise = 0.002; /**< standard deviation that is assumed at least: figures are rounded */
    bool proven = false; /**< the figures hold changes that were proven before, and no noise: a level begins
                              with each that is `least` off, the last one too */
};

/** A part of the series that stays where it is. */
struct Level {
    std::size_t begin = 0; /**< index of its first figure */
    double at = 0;
};

/**
 * The standard deviation of the noise, from medians of differences between figures 1, 2 and 5 places apart
 * (the largest of them, so that slow wandering counts as noise; 2 from 10 figures on, 5 from 25): neither
 * outliers nor few steps add to it.
 * \return at least 0; 0 for fewer than two figures
 */
double noiseOf(std::span<const double> figures);

/**
 * The levels that make the sum of costs and penalties least, searched by PELT (Killick, Fearnhead and Eckley
 * 2012). The cost of a figure is its squared distance from the level, in units of the noise, up to a bound
 * (the biweight loss of Fearnhead and Rigaill 2019), so that figures that other work on the machine disturbed
 * make no level. A level is found from the median of its figures on, not by comparing all minima of the
 * bounded loss. \param figures  logarithms, so that differences are ratios \return at least one level for a
 * series of figures; each but the first begins with a step
 */
std::vector<Level> findLevels(std::span<const double> figures, const StepRules& rules = {});

#endif
