/** \file
 * The machine and the operating system that the reports name.
 */
#ifndef BXHOST_H
#define BXHOST_H

#include <array>
#include <string>

/** Name of the host. */
class bxHost {
  public:
    bxHost();
    const char* name() const { return m_name.data(); }

  private:
    std::array<char, 1024> m_name{};
};

/** Description of the operating system: name, release and version. */
class bxOS {
  public:
    bxOS();
    const char* text() const { return m_text.c_str(); }

  private:
    std::string m_text;
};

/** Processors online, at least 1. */
int bxGetNumOfProcessors();

#endif
