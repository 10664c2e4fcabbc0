/** \file
 * The two sides of a comparison as the user names them.
 */
#ifndef PAIR_SIDES_H
#define PAIR_SIDES_H

#include <array>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

/** A comparison that cannot be made; the text says why. */
class PairError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/** What runs on one side. */
struct Side {
    std::string text; /**< as the user gave it */
    std::filesystem::path program;
    std::filesystem::path libraries;      /**< directory that comes before the program's own; may be empty */
    std::vector<std::string> environment; /**< NAME=value */
    std::vector<std::string> keys;
};

using Sides = std::array<Side, 2>;

/** The sides by their name in outputs. */
inline constexpr std::array<const char*, 2> sideNames{"before", "after"};

/**
 * Reads a side: words separated by blanks, each a directory of the library, a program, a setting of the
 * environment (NAME=value) or a key (-T SSE2 and -TSSE2 are the same). A word that names a path as a whole
 * may hold blanks. Nothing at all is the program as it stands.
 * \param program  where the side names none
 * \param keys  of both sides, before its own
 * \throws PairError  for a word that is none of these
 */
Side readSide(const std::string& text, const std::filesystem::path& program,
              const std::vector<std::string>& keys);

#endif
