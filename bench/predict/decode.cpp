// Runs the decoder of this program, whose main is decoderMain.
#include "blocks.h"

#include <fstream>

int decoderMain(int argc, char* argv[]);

bool predict::decode(const char* stream, Watch how) {
    if (!std::ifstream(stream).good())
        return false;
    char name[] = "decoder";
    std::string file = stream;
    char* words[] = {name, file.data(), nullptr};
    watch = how;
    const int status = decoderMain(2, words);
    watch = Watch::nothing;
    return status == 0;
}
