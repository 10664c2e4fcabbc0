// Bit vectors: reads and writes at any place, against a plain model of the bits.
#include "fuzzinput.h"
#include "kvbitvector.h"

#include <algorithm>

namespace {

/** The bits of a vector as a list; beyond the end writes are dropped and reads give 0. */
class Model {
  public:
    explicit Model(int bytes) : m_bits(static_cast<std::size_t>(bytes) * 8) {}

    void write(bool bit) {
        if (m_position < m_bits.size())
            m_bits[m_position] = bit;
        ++m_position;
    }
    bool read() {
        const bool bit = m_position < m_bits.size() && m_bits[m_position];
        ++m_position;
        return bit;
    }
    void seek(int position) { m_position = static_cast<std::size_t>(position); }
    int position() const { return static_cast<int>(m_position); }
    const std::vector<bool>& bits() const { return m_bits; }

  private:
    std::vector<bool> m_bits;
    std::size_t m_position = 0;
};

std::string digits(const bxString& text) {
    std::string kept;
    for (const char c : text.view())
        if (c == '0' || c == '1')
            kept += c;
    return kept;
}

void writeNumber(kvBitVector& bits, Model& model, FuzzedDataProvider& input) {
    const auto value = input.ConsumeIntegral<unsigned>();
    const auto n = input.ConsumeIntegralInRange(0, 32);
    bits.setBits(value, n);
    for (int i = n - 1; i >= 0; --i)
        model.write((value >> i & 1U) != 0);
}

void readNumber(kvBitVector& bits, Model& model, FuzzedDataProvider& input) {
    const auto n = input.ConsumeIntegralInRange(0, 32);
    unsigned value = 0;
    bits.getBits(value, n);
    unsigned wanted = 0;
    for (int i = 0; i < n; ++i)
        wanted = wanted << 1 | static_cast<unsigned>(model.read());
    require(value == wanted, "a number is read as it was written");
}

void writeText(kvBitVector& bits, Model& model, FuzzedDataProvider& input) {
    const std::string text = input.ConsumeRandomLengthString(64);
    bits.setBits(toText(text));
    for (const char c : digits(toText(text)))
        model.write(c == '1');
}

void readText(kvBitVector& bits, Model& model, FuzzedDataProvider& input) {
    const auto n = input.ConsumeIntegralInRange(0, 200);
    bxString text;
    bits.getBits(text, n);
    std::string wanted;
    for (int i = 0; i < n; ++i)
        wanted += model.read() ? '1' : '0';
    require(digits(text) == wanted, "bits are read as text");
}

void describe(const kvBitVector& bits, const Model& model, FuzzedDataProvider& input) {
    const auto total = static_cast<int>(model.bits().size());
    const auto start = input.ConsumeIntegralInRange(0, total);
    const auto n = input.ConsumeIntegralInRange(0, 2 * total);
    const int end = n == 0 ? total : std::min(total, start + n);
    std::string wanted;
    for (int i = start; i < end; ++i)
        wanted += model.bits()[static_cast<std::size_t>(i)] ? '1' : '0';
    require(digits(bits.getBitString(start, n)) == wanted, "the text has the bits asked for");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const auto bytes = input.ConsumeIntegralInRange(1, 40);
    kvBitVector bits;
    require(bits.createVector(bytes, smZero, 0, 0), "a vector is made");
    Model model(bytes);
    while (input.remaining_bytes() > 0) {
        switch (input.ConsumeIntegralInRange(0, 7)) {
        case 0:
            writeNumber(bits, model, input);
            break;
        case 1:
            readNumber(bits, model, input);
            break;
        case 2:
            writeText(bits, model, input);
            break;
        case 3:
            readText(bits, model, input);
            break;
        case 4:
            describe(bits, model, input);
            break;
        case 5: {
            const auto bit = input.ConsumeIntegral<unsigned char>();
            bits.setBit(bit);
            model.write((bit & 1) != 0);
            break;
        }
        case 6:
            require(bits.getBit() == static_cast<unsigned char>(model.read()), "a bit is read");
            break;
        default: {
            const auto position = input.ConsumeIntegralInRange(0, 400);
            bits.setBitPos(position);
            model.seek(position);
        }
        }
        require(bits.getBitPos() == model.position(), "the cursor is where it should be");
    }
    bits.deleteVector();
    return 0;
}
