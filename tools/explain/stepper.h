/** \file
 * Runs of the program that write down what a function does.
 */
#ifndef EXPLAIN_STEPPER_H
#define EXPLAIN_STEPPER_H

#include "stepfile.h"

#include <filesystem>
#include <string>
#include <vector>

/** How to run it. */
struct StepperRules {
    std::filesystem::path program;
    std::vector<std::string> keys; /**< of the user */
    int most = 200'000;            /**< steps of a call */
    int row = 0;                   /**< the only combination wanted; 0 for all */
    bool precise = true;           /**< measure clocks of the core, too */
};

/** A directory that goes with its owner. */
class TemporaryDirectory {
  public:
    TemporaryDirectory();
    ~TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
    const std::filesystem::path& path() const { return m_path; }

  private:
    std::filesystem::path m_path;
};

/** Runs a program to its end. \return its exit status; what it wrote stands in `output` */
int runToEnd(const std::vector<std::string>& words, std::string& output);

/** The combinations of a function, of all functions where it is empty, in order. \throws ExplainError  where
 * there are none, with the program's own words */
std::vector<SteppedCall> stepThrough(const std::string& function, const StepperRules& rules);

#endif
