/** \file
 * The one exception type that a test run catches.
 */
#ifndef BXEXCEPTION_H
#define BXEXCEPTION_H

#include "foundation/bxstring.h"

#include <array>
#include <exception>
#include <string_view>

/** A wrong value of the user, or a fault in a tested function. Texts over 255 characters are cut. */
class bxException : public std::exception {
  public:
    /** An error that the harness found; the message is "--ZOR. Exception: " and the text. */
    explicit bxException(const bxString& info);
    /** A fault; the message is "--ZOR. Signal: " and the text. */
    explicit bxException(const char* text);

    /** The whole message. */
    const char* msg() const noexcept { return m_msg.data(); }
    /** The bare text. */
    const char* info() const noexcept { return m_info.data(); }
    const char* what() const noexcept override { return msg(); }

  private:
    bxException(std::string_view kind, std::string_view text);

    std::array<char, 256> m_msg{};
    std::array<char, 256> m_info{};
};

#endif
