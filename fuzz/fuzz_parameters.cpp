// Texts of parameters, lists and ranges, as -d keys, ini files and questions give them, on every kind of
// parameter.
#include "fuzzinput.h"
#include "kvscaleiterator.h"
#include "parameters/bxmap.h"
#include "parameters/bxstepiterator.h"
#include "timing/bxexception.h"

namespace {

enum Shape { round, square, squareish };

constexpr int mostValues = 2000; // of a pass that is looked at; ranges may have billions

/** The texts of the values of a pass. */
template <class Parameter>
std::vector<std::string> pass(Parameter& parameter) {
    std::vector<std::string> values;
    for (bool more = parameter.firstValue(); more && values.size() < mostValues; more = parameter.nextValue())
        values.emplace_back(parameter.valueString().view());
    return values;
}

bool takes(bxParameter& parameter, const bxString& text) {
    try {
        parameter.translate(text);
        return true;
    } catch (const bxException& refused) {
        require(!bxString(refused.info()).empty(), "a refusal says why");
        return false;
    }
}

/** Three values with a negative one behind: their text is that of a range, by the grammar of ranges. */
bool looksLikeRange(const std::vector<std::string>& values) {
    return values.size() == 3 && values[2].starts_with('-');
}

/** A text is taken whole, and the default then gives the same values again; or all stays as it was. */
template <class Parameter>
void translates(Parameter&& parameter, const bxString& text) {
    const std::vector<std::string> before = pass(parameter);
    const bool taken = takes(parameter, text);
    const std::vector<std::string> values = pass(parameter);
    require(values == pass(parameter), "a pass can be repeated");
    if (!taken) {
        require(values == before, "a refused text changes nothing");
        return;
    }
    parameter.description();
    parameter.prompt();
    const bxString same = parameter.defaultString();
    if (!same.empty() && !looksLikeRange(values)) {
        require(takes(parameter, same), "the default's text is taken");
        require(pass(parameter) == values, "the default's text gives the same values");
    }
}

/** A range goes from its first value towards its last, and ends there or before. */
void stepsTowardsTheEnd(const bxString& text) {
    bxStepIterator<int> range(0, "Len", "");
    if (!takes(range, text) || !range.isRange())
        return;
    int last = 0, first = 0, count = 0;
    for (bool more = range.firstValue(); more && count < mostValues; more = range.nextValue(), ++count) {
        if (count == 0)
            first = range.value();
        else if (count == 1)
            require(range.value() != first, "a range moves");
        if (count > 1)
            require((range.value() > last) == (last > first), "a range keeps its direction");
        last = range.value();
    }
    require(count > 0, "a range has a first value");
}

void allowedOnly(const bxString& text) {
    bxEnumIterator<int> allowed(0, "Step", "");
    for (const int value : {1, 2, 10, -5})
        allowed.addValidation(value);
    translates(allowed, text);
    for (const int value : allowed)
        require(value == 1 || value == 2 || value == 10 || value == -5, "only allowed values are taken");
}

void namesOnly(const bxString& text) {
    bxMapIterator<Shape> shapes(round, "Shape", "");
    shapes[square] = "long";
    shapes[squareish] = "longstart";
    shapes[round] = "short";
    translates(shapes, text);
    for (const Shape shape : shapes)
        require(shape == round || shape == square || shape == squareish, "only named values are taken");
    bxMapDefault<bool> yesNo(true, "By", "");
    yesNo[false] = "byte";
    yesNo[true] = "element";
    translates(yesNo, text);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const auto kind = input.ConsumeIntegralInRange(0, 8);
    const bxString text = toText(input.ConsumeRemainingBytesAsString());
    switch (kind) {
    case 0:
        translates(bxDefault<int>(7, "Len", ""), text);
        break;
    case 1:
        translates(bxDefault<ZoriSize>({8, 4}, "Size", ""), text);
        break;
    case 2:
        translates(bxIterator<int>(7, "Len", ""), text);
        break;
    case 3:
        translates(bxIterator<ZoriSize>({8, 4}, "Size", ""), text);
        break;
    case 4:
        translates(bxStepIterator<int>(7, "Len", ""), text);
        break;
    case 5:
        stepsTowardsTheEnd(text);
        break;
    case 6:
        allowedOnly(text);
        break;
    case 7:
        namesOnly(text);
        break;
    default: {
        kvScaleIterator scale;
        scale.init("zorsAdd_16s_Sfs");
        translates(scale, text);
    }
    }
    return 0;
}
