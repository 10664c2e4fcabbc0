/** \file
 * What the command lines of the companion programs have in common.
 */
#ifndef COMMANDLINE_H
#define COMMANDLINE_H

#include <CLI/CLI.hpp>
#include <functional>
#include <string>

/** Exit statuses of the companion programs. */
enum ExitStatus { done = 0, slowerThanAllowed = 1, cannotDo = 2 };

/** Adds an option for a share: "5", "5%" and "5 %" are 0.05. Refused unless from 0 to `most` percent. */
void addShare(CLI::App& app, const std::string& name, double& share, int most, const std::string& help);

/** Reads the words, does the work and tells of what went wrong. \return the exit status, that of `work` at
 * best */
int runProgram(CLI::App& app, int argc, char** argv, const std::function<int()>& work);

#endif
