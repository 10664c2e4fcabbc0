/** \file
 * Command lines of the companion programs: "--name", "--name value", "--name=value" and operands.
 */
#ifndef ARGUMENTS_H
#define ARGUMENTS_H

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

/** A command line that cannot be followed; the text says why. */
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/** Exit statuses of the companion programs. */
enum ExitStatus { done = 0, slowerThanAllowed = 1, cannotDo = 2 };

/** Walks over a command line; the caller asks for one option after the other. */
class Arguments {
  public:
    Arguments(int argc, const char* const* argv) : m_words(argv + 1, argv + argc) {}

    /** Goes to the next word; false behind the last. */
    bool next();
    /** Whether the present word is this option. */
    bool is(std::string_view option) const;
    /** Whether the present word is no option. Behind "--" no word is one; "-" is none. */
    bool isOperand() const { return m_operand; }
    /** The value of the present option. \throws UsageError without one */
    std::string value();
    /** The value as a share: "5", "5%" and "5 %" are 0.05. \throws UsageError unless from 0 to `most` percent
     */
    double percent(double most);
    /** The present word. */
    const std::string& word() const { return m_word; }
    /** \throws UsageError  always: the present word is no option that the caller knows */
    [[noreturn]] void refuse() const;

  private:
    std::vector<std::string> m_words;
    std::size_t m_next = 0;
    std::string m_word;
    std::string m_attached;
    bool m_hasAttached = false;
    bool m_operand = false;
    bool m_operandsOnly = false;
};

#endif
