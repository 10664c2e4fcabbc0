/** \file
 * The terminal behind standard output.
 */
#ifndef TERMINAL_H
#define TERMINAL_H

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>

/** What a terminal shows at once. */
struct Screen {
    std::optional<std::size_t> lines; /**< nothing: no terminal, as many as there are */
    std::size_t columns = 100;
    bool styled = false; /**< bold, colour and links may be used: no TERM=dumb, no NO_COLOR */
};

/** The screen that standard output goes to. */
Screen findScreen();

/** An address that opens the file: "file://", host and the path with what an address cannot hold as "%20". */
std::string fileAddress(const std::filesystem::path& file, const std::string& host);

/** The text as a link (OSC 8), which terminals without such links show as the text alone. */
std::string terminalLink(const std::string& address, const std::string& text);

#endif
