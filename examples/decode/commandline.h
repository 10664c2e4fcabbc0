/** \file
 * The command line that both decoders share: [-f] [-c type] input [output.wav].
 */
#ifndef DECODE_COMMANDLINE_H
#define DECODE_COMMANDLINE_H

#include "zorcore.h"

#include <cstdlib>
#include <string_view>

struct CommandLine {
    bool floats = false;          /**< -f: 32-bit floats instead of 16-bit integers */
    const char* input = nullptr;  /**< null where the words are wrong */
    const char* output = nullptr; /**< null to decode only */

    /** Takes the words and the code path of -c, a processor type of zorcore.h. */
    CommandLine(int argc, char* argv[]) {
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
};

#endif
