/** \file
 * The values set by -d keys.
 */
#ifndef BXDATALIST_H
#define BXDATALIST_H

#include "parameters/bxnamedlist.h"
#include "parameters/bxvaluesource.h"

/** One -d setting. */
struct bxData {
    bxData(const bxString& n, const bxString& v) : name(n), value(v) {}
    bxString name;
    bxString value;
    bool asked = false; /**< some parameter asked for it */
};

inline const bxString& bxNameOfData(const bxData& data) {
    return data.name;
}

/** The -d settings in the order given; the last one for a name wins. Names are compared exactly. */
class bxDataList : public bxNamedList<bxData, bxNameOfData>, public bxValueSource {
  public:
    /** Takes "name=value"; what follows a second "=" is dropped. */
    void set(bxString text);
    /** Sets a trimmed name to a trimmed value; an empty name is ignored. */
    void set(bxString name, bxString value);
    /** Gives the value of a name; false, and `value` is untouched, when it is not set. */
    bool get(bxString name, bxString& value);
    std::optional<bxGiven> valueOf(const bxQuestion& question) override;
};

#endif
