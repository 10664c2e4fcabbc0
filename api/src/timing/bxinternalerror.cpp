#include "timing/bxinternalerror.h"

#include "output/bxostream.h"

bxResult bxInternalError(const char* path, int line) {
    g_ostrm << ERR << "BX internal error: file " << bxString(path).getFileName() << ", line " << line << "\n"
            << endMessage;
    return FAIL;
}
