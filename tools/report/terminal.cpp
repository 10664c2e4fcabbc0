#include "terminal.h"

#include <array>
#include <cctype>
#include <cstdlib>
#include <string_view>
#include <sys/ioctl.h>
#include <unistd.h>

Screen findScreen() {
    Screen screen;
    winsize size{};
    if (isatty(STDOUT_FILENO) == 0)
        return screen;
    const bool known = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_row > 0 && size.ws_col > 0;
    screen.lines = known ? size.ws_row : 24;
    screen.columns = known ? size.ws_col : 80;
    const char* terminal = std::getenv("TERM");
    const char* plain = std::getenv("NO_COLOR");
    screen.styled =
        terminal != nullptr && std::string_view(terminal) != "dumb" && (plain == nullptr || *plain == '\0');
    return screen;
}

std::string fileAddress(const std::filesystem::path& file, const std::string& host) {
    constexpr std::string_view plain = "/-._~";
    constexpr std::array digits{'0', '1', '2', '3', '4', '5', '6', '7',
                                '8', '9', 'A', 'B', 'C', 'D', 'E', 'F'};
    std::string address = "file://" + host;
    for (const char c : std::filesystem::absolute(file).lexically_normal().string()) {
        const auto byte = static_cast<unsigned char>(c);
        if (std::isalnum(byte) != 0 || plain.find(c) != std::string_view::npos)
            address += c;
        else
            address.append({'%', digits[byte >> 4U], digits[byte & 15U]});
    }
    return address;
}

std::string terminalLink(const std::string& address, const std::string& text) {
    return "\x1b]8;;" + address + "\x1b\\" + text + "\x1b]8;;\x1b\\";
}
