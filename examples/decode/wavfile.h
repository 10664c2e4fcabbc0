/** \file
 * A WAV file of floats or of 16-bit integers, written as it comes; its sizes are put in at the end.
 */
#ifndef DECODE_WAVFILE_H
#define DECODE_WAVFILE_H

#include "zors.h"

#include <fstream>
#include <vector>

class WavFile {
  public:
    WavFile(const char* name, bool floats) : m_out(name, std::ios::binary), m_floats(floats) {
        writeHeader(0, 0);
    }

    /** Appends interleaved samples, whose full scale is 2^scaleBits; the file's is 1 or 2^15. */
    void write(std::vector<float>& pcm, int scaleBits) {
        const int length = static_cast<int>(pcm.size());
        if (m_floats) {
            const float factor = 1 / static_cast<float>(1 << scaleBits);
            if (scaleBits != 0)
                zorsScale_32f_I(pcm.data(), &factor, &length, 1);
            append(pcm);
        } else {
            m_integers.resize(pcm.size());
            zorsConvert_32f16s_Sfs(pcm.data(), m_integers.data(), length, scaleBits - 15);
            append(m_integers);
        }
    }

    /** Whether everything could be written. */
    bool finish(int channels, int samplingRate) {
        m_out.seekp(0);
        writeHeader(static_cast<std::size_t>(channels), static_cast<std::size_t>(samplingRate));
        return static_cast<bool>(m_out.flush());
    }

  private:
    template <class Sample>
    void append(const std::vector<Sample>& samples) {
        const std::size_t bytes = samples.size() * sizeof(Sample);
        m_out.write(reinterpret_cast<const char*>(samples.data()), static_cast<std::streamsize>(bytes));
        m_dataBytes += bytes;
    }

    /** A number of the header, the lowest byte first. */
    void put(std::size_t value, int bytes) {
        for (; bytes > 0; --bytes, value >>= 8)
            m_out.put(static_cast<char>(value & 0xFF));
    }

    void writeHeader(std::size_t channels, std::size_t rate) {
        const std::size_t sampleBytes = m_floats ? 4 : 2;
        m_out << "RIFF";
        put(36 + m_dataBytes, 4);
        m_out << "WAVEfmt ";
        put(16, 4);
        put(m_floats ? 3 : 1, 2);
        put(channels, 2);
        put(rate, 4);
        put(rate * channels * sampleBytes, 4);
        put(channels * sampleBytes, 2);
        put(8 * sampleBytes, 2);
        m_out << "data";
        put(m_dataBytes, 4);
    }

    std::ofstream m_out;
    bool m_floats;
    std::size_t m_dataBytes = 0;
    std::vector<Zor16s> m_integers;
};

#endif
