/** \file
 * Series of slices as they might come, with a truth that is known: what an interval is worth is tried on
 * them.
 */
#ifndef TIMING_SIMULATED_H
#define TIMING_SIMULATED_H

#include "timing/bxslices.h"

#include <cmath>
#include <random>

/** Values around 1000, each with a deviation of 1 but for what disturbs it. */
class Simulated {
  public:
    struct Kind {
        const char* name;
        double correlation; /**< of neighbours, of an autoregressive series of the first order */
        double disturbed;   /**< share of the slices that err 20 times as much */
        double burst;       /**< slices that a disturbance, the same for all of them, lasts */
    };

    static constexpr double truth = 1000;
    static constexpr Kind kinds[] = {{"independent", 0, 0, 0},
                                     {"neighbours correlated by 0.5", 0.5, 0, 0},
                                     {"by 0.7", 0.7, 0, 0},
                                     {"by 0.9", 0.9, 0, 0},
                                     {"one in ten errs 20 times as much", 0, 0.1, 0},
                                     {"a tenth in bursts of five that err alike", 0, 0.1, 5}};
    /** Accuracies that end a series: from one that the first look has, to one that none has. */
    static constexpr double accuracies[] = {0.05, 0.001, 0.0005, 0.0002};

    explicit Simulated(const Kind& kind, unsigned seed = 4711) : m_kind(kind), m_random(seed) { next(); }

    /** Begins a series that knows nothing of the last one. */
    void next() { m_state = m_normal(m_random); }

    double operator()() {
        const double rho = m_kind.correlation;
        const double noise = m_normal(m_random);
        m_state = rho * m_state + std::sqrt(1 - rho * rho) * noise;
        if (m_kind.burst == 0)
            return truth + (m_uniform(m_random) < m_kind.disturbed ? 20 * m_state : m_state);
        const double leaves = 1 / m_kind.burst, comes = leaves * m_kind.disturbed / (1 - m_kind.disturbed);
        if (m_uniform(m_random) < (m_inBurst ? leaves : comes)) {
            m_inBurst = !m_inBurst;
            m_offset = 10 * m_normal(m_random);
        }
        return truth + m_state + (m_inBurst ? m_offset : 0);
    }

    /** The figure of one series, ended as the precise mode does, but after so many slices at most. */
    bxPreciseFigure series(double accuracy, int most) {
        constexpr double rate = 1.75; // core clocks of a count
        next();
        bxSliceSeries slices;
        bxPreciseFigure figure;
        for (int look = bxSliceSeries::fewest;
             slices.count() < most && !(figure.reached && figure.settled);) {
            slices.add({(*this)() / rate, 1 / rate, 1 / rate});
            if (slices.count() < look && slices.count() < most)
                continue;
            figure = slices.figure(accuracy);
            look = bxSliceSeries::nextLook(slices.count());
        }
        return figure;
    }

  private:
    Kind m_kind;
    std::mt19937 m_random;
    std::normal_distribution<double> m_normal;
    std::uniform_real_distribution<double> m_uniform;
    double m_state = 0, m_offset = 0;
    bool m_inBurst = false;
};

#endif
