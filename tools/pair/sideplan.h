/** \file
 * The plan that both sides share with the program that compares.
 */
#ifndef PAIR_SIDEPLAN_H
#define PAIR_SIDEPLAN_H

#include "timing/bxturnsform.h"

#include <span>

/** A file descriptor that is closed with its owner. */
class Descriptor {
  public:
    explicit Descriptor(int number = -1) : m_number(number) {}
    Descriptor(Descriptor&& other) noexcept : m_number(other.release()) {}
    Descriptor& operator=(Descriptor&& other) noexcept;
    ~Descriptor() { reset(); }

    int number() const { return m_number; }
    int release();
    void reset();

  private:
    int m_number;
};

/** Shared memory that holds a plan. */
class SidePlan {
  public:
    /** Room for as many rows and stretches; all of it 0. \throws PairError  without memory */
    SidePlan(bxTurnsForm::Task task, std::size_t rows, std::size_t stretches);
    ~SidePlan();
    SidePlan(const SidePlan&) = delete;
    SidePlan& operator=(const SidePlan&) = delete;

    bxTurnsForm::Plan& head() { return *m_head; }
    std::span<bxTurnsForm::Row> rows();
    /** Clocks per call of a side's stretches in a row that it has timed. */
    std::span<const double> clocks(const bxTurnsForm::Row& row, int side) const;
    /** Descriptor of the memory, for a side to inherit. */
    int descriptor() const { return m_file.number(); }
    /** Changes whenever a side gets on. */
    long long progress();

  private:
    Descriptor m_file;
    std::size_t m_size = 0;
    bxTurnsForm::Plan* m_head = nullptr;
};

#endif
