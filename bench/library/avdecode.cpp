// Decodes an ADTS file with libavcodec and throws the samples away, as aacdec does without an output file:
//
//     avdecode input.aac
extern "C" {
#include <libavcodec/avcodec.h>
}

#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <vector>

namespace {

template <class T, auto free>
struct Free {
    void operator()(T* object) const { free(&object); }
};

} // namespace

int main(int argc, char* argv[]) {
    std::ifstream in(argc == 2 ? argv[1] : "", std::ios::binary);
    std::vector<std::uint8_t> file((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    const std::size_t size = file.size();
    file.resize(size + AV_INPUT_BUFFER_PADDING_SIZE);
    const AVCodec* const codec = avcodec_find_decoder(AV_CODEC_ID_AAC);
    const std::unique_ptr<AVCodecContext, Free<AVCodecContext, avcodec_free_context>> decoder(
        avcodec_alloc_context3(codec));
    const std::unique_ptr<AVPacket, Free<AVPacket, av_packet_free>> packet(av_packet_alloc());
    const std::unique_ptr<AVFrame, Free<AVFrame, av_frame_free>> frame(av_frame_alloc());
    if (size == 0 || !decoder || !packet || !frame || avcodec_open2(decoder.get(), codec, nullptr) < 0)
        return 2;
    AVCodecParserContext* const parser = av_parser_init(AV_CODEC_ID_AAC);
    long long samples = 0;
    for (std::size_t at = 0; at < size;) {
        const int taken = av_parser_parse2(parser, decoder.get(), &packet->data, &packet->size, &file[at],
                                           static_cast<int>(size - at), AV_NOPTS_VALUE, AV_NOPTS_VALUE, 0);
        if (taken < 0)
            break;
        at += static_cast<std::size_t>(taken);
        if (packet->size > 0 && avcodec_send_packet(decoder.get(), packet.get()) >= 0)
            while (avcodec_receive_frame(decoder.get(), frame.get()) >= 0)
                samples += frame->nb_samples;
    }
    av_parser_close(parser);
    return samples > 0 ? 0 : 1;
}
