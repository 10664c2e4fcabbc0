/** \file
 * What a program says of the library that it measures.
 */
#ifndef KVLIBRARY_H
#define KVLIBRARY_H

#include "foundation/bxstring.h"
#include "zortypes.h"

/** Which statuses of a call are errors; 0 never is. */
enum kvFailure {
    kvAsLibrary,     /**< as the library has it (`kvLibrary`), or kvNegativeFails where none was named */
    kvNegativeFails, /**< negative ones; positive ones are warnings */
    kvPositiveFails, /**< positive ones; negative ones are warnings */
    kvNonzeroFails,  /**< all others */
    kvNeverFails     /**< none: what the function returns is no status */
};

/** What a status says. */
enum class kvStatusKind { good, warning, error };

/**
 * Names the library of a program, once, in any of its files:
 *
 *     static const kvLibrary library("mylib", MYLIB_VERSION, kvPositiveFails, mylibErrorText);
 *
 * Name and version stand in the title of listings and tables. The word says which statuses of its functions
 * are errors, for tests of all forms; the function gives the text of a status, else it is "Error" or
 * "Warning".
 */
class kvLibrary {
  public:
    kvLibrary(const char* name, const char* version, kvFailure failure = kvNegativeFails,
              const char* (*text)(int status) = nullptr);

    /** \param failure of the function; kvAsLibrary asks the library's */
    static kvStatusKind kindOf(ZorStatus status, kvFailure failure);
    static const char* statusText(ZorStatus status, bool error);
};

#endif
