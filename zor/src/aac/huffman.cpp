#include "aac/huffman.h"

#include "tables/aac_scalefactor_huffman.h"
#include "tables/aac_spectral_huffman.h"

#include <array>
#include <vector>

namespace zor::aac {

namespace {

struct Record {
    Zor32s value, code, length;
};

/** How the index of a code word stands for its values. */
struct BookShape {
    int dimension;
    int levels; /**< values that one line can take */
    int lowest;
};

constexpr std::array<BookShape, spectralBooks> shapes = {{{4, 3, -1},
                                                          {4, 3, -1},
                                                          {4, 3, 0},
                                                          {4, 3, 0},
                                                          {2, 9, -4},
                                                          {2, 9, -4},
                                                          {2, 8, 0},
                                                          {2, 8, 0},
                                                          {2, 13, 0},
                                                          {2, 13, 0},
                                                          {2, 17, 0}}};

/** The values of a code word; the last one varies fastest with the index. */
Zor32s pack(const BookShape& shape, int index) {
    Zor32u packed = 0;
    int nonZero = 0;
    for (int i = shape.dimension - 1; i >= 0; --i, index /= shape.levels) {
        const int value = index % shape.levels + shape.lowest;
        nonZero += value != 0;
        packed |= (static_cast<Zor32u>(value) & ((1U << packing::valueBits) - 1)) << (packing::valueBits * i);
    }
    return static_cast<Zor32s>(packed | static_cast<Zor32u>(nonZero) << packing::countShift);
}

std::vector<PrefixEntry> tableOf(std::span<const Record> records) {
    BookTable::PrefixBits bits;
    std::vector<PrefixEntry> entries(BookTable::measure(records, bits));
    BookTable::build(records, bits, std::span(entries));
    return entries;
}

/** All books, built when the library is loaded. */
struct Books {
    std::array<std::vector<PrefixEntry>, spectralBooks> spectral;
    std::vector<PrefixEntry> scaleFactor;

    Books() {
        namespace source = tables::aac_spectral_huffman;
        std::array<std::vector<Record>, spectralBooks> records;
        for (int row = 0; row < source::rows; ++row) {
            const auto book = static_cast<std::size_t>(source::codebook[row] - 1);
            records[book].push_back(
                {pack(shapes[book], source::index[row]), source::code[row], source::length[row]});
        }
        for (std::size_t book = 0; book < records.size(); ++book)
            spectral[book] = tableOf(records[book]);

        namespace differences = tables::aac_scalefactor_huffman;
        std::vector<Record> factors;
        for (int row = 0; row < differences::rows; ++row)
            factors.push_back(
                {differences::index[row] - 60, differences::code[row], differences::length[row]});
        scaleFactor = tableOf(factors);
    }
};

const Books books;

} // namespace

const PrefixEntry* spectralBook(int book) {
    return books.spectral[static_cast<std::size_t>(book - 1)].data();
}

const PrefixEntry* scaleFactorBook() {
    return books.scaleFactor.data();
}

} // namespace zor::aac
