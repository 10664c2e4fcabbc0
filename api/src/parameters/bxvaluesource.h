/** \file
 * What gives the texts of values: -d keys, the ini file, the console.
 */
#ifndef BXVALUESOURCE_H
#define BXVALUESOURCE_H

#include "foundation/bxstring.h"

#include <optional>

/** The text of a value, and where it came from. */
struct bxGiven {
    enum Source { fromDefault = 0, fromConsole = 1, fromIniFile = 2, fromDataKey = 3 };

    bxString text;
    Source source = fromDefault;
    bxString origin; /**< in words, for messages */
};

/** What a source is asked for. */
struct bxQuestion {
    bxString section; /**< of the ini file */
    bxString name;
    bxString deflt;  /**< text of the default */
    bxString prompt; /**< for a person */
};

/** One place where values stand. */
class bxValueSource {
  public:
    virtual ~bxValueSource() = default;
    /** The text for a name, or nothing where the source has none; an empty text counts as its default. */
    virtual std::optional<bxGiven> valueOf(const bxQuestion& question) = 0;
};

#endif
