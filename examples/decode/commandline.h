/** \file
 * The command line that both decoders share: [-f] [-c type] input [output.wav].
 */
#ifndef DECODE_COMMANDLINE_H
#define DECODE_COMMANDLINE_H

#include "zorcore.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

struct CommandLine {
    const char* program;          /**< its name, for messages */
    bool floats = false;          /**< -f: 32-bit floats instead of 16-bit integers */
    const char* input = nullptr;  /**< null where the words are wrong */
    const char* output = nullptr; /**< null to decode only */

    /** Takes the words and the code path of -c, a processor type of zorcore.h. */
    CommandLine(int argc, char* argv[], const char* name) : program(name) {
        int arg = 1;
        for (; arg < argc && argv[arg][0] == '-'; ++arg) {
            const std::string_view option = argv[arg];
            if (option == "-f")
                floats = true;
            else if (option != "-c" || arg + 1 == argc || zorInitCpu(std::atoi(argv[++arg])) < 0)
                return;
        }
        if (arg == argc || argc - arg > 2)
            return;
        input = argv[arg];
        output = arg + 1 < argc ? argv[arg + 1] : nullptr;
    }

    /** Says how the words should be; the exit status. \param kind  of the input, the end of its name */
    int usage(const char* kind) const {
        std::fprintf(stderr, "usage: %s [-f] [-c type] input.%s [output.wav]\n", program, kind);
        return 2;
    }
    /** Says what failed with which file; the exit status. */
    int fail(const char* what, const char* name) const {
        std::fprintf(stderr, "%s: %s: %s\n", program, what, name);
        return 1;
    }
    /** The whole input; nothing where it cannot be read. */
    std::optional<std::vector<Zor8u>> read() const {
        std::ifstream in(input, std::ios::binary);
        std::vector<Zor8u> file((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        return in ? std::optional(std::move(file)) : std::nullopt;
    }
};

#endif
