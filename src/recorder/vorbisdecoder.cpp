#include "recorder/vorbisdecoder.h"

#include <vorbis/codec.h>

#include <cstring>

// The library's state for one logical stream, and the page reader that
// outlives it.
struct VorbisDecoder::State
{
    State() { ogg_sync_init(&sync); }
    ~State()
    {
        endStream();
        ogg_sync_clear(&sync);
    }
    State(const State &) = delete;
    State &operator=(const State &) = delete;

    void beginStream(int serial)
    {
        endStream();
        ogg_stream_init(&stream, serial);
        vorbis_info_init(&info);
        vorbis_comment_init(&comment);
        inStream = true;
    }
    void endStream()
    {
        if (synthesis) {
            vorbis_block_clear(&block);
            vorbis_dsp_clear(&dsp);
        }
        if (inStream) {
            vorbis_comment_clear(&comment);
            vorbis_info_clear(&info);
            ogg_stream_clear(&stream);
        }
        inStream = synthesis = false;
        headers = 0;
    }

    // Decodes one audio packet into mono samples for `sink`; the count
    // given, or -1 when the packet cannot be decoded. A header packet where
    // audio belongs is a stream that restarted without saying so.
    int synthesize(ogg_packet &packet, std::vector<float> &mono, const Sink &sink)
    {
        const int result = vorbis_synthesis(&block, &packet);
        if (result == OV_EBADPACKET)
            return 0;
        if (result != 0 || vorbis_synthesis_blockin(&dsp, &block) != 0)
            return -1;
        int total = 0;
        float **pcm = nullptr;
        int count = 0;
        while ((count = vorbis_synthesis_pcmout(&dsp, &pcm)) > 0) {
            mono.assign(static_cast<size_t>(count), 0.0f);
            for (int c = 0; c < info.channels; ++c)
                for (int i = 0; i < count; ++i)
                    mono[static_cast<size_t>(i)] += pcm[c][i] / static_cast<float>(info.channels);
            vorbis_synthesis_read(&dsp, count);
            sink(static_cast<int>(info.rate), mono);
            total += count;
        }
        return total;
    }

    ogg_sync_state sync{};
    ogg_stream_state stream{};
    vorbis_info info{};
    vorbis_comment comment{};
    vorbis_dsp_state dsp{};
    vorbis_block block{};
    int headers = 0;
    bool inStream = false;
    bool synthesis = false;
};

VorbisDecoder::VorbisDecoder() : m_state(std::make_unique<State>()) {}

VorbisDecoder::~VorbisDecoder() = default;

bool VorbisDecoder::decode(QByteArrayView bytes, const Sink &sink)
{
    if (m_failed)
        return false;
    if (!bytes.isEmpty()) {
        char *buffer = ogg_sync_buffer(&m_state->sync, bytes.size());
        if (!buffer)
            return fail();
        std::memcpy(buffer, bytes.data(), static_cast<size_t>(bytes.size()));
        ogg_sync_wrote(&m_state->sync, bytes.size());
        m_bytesWithoutAudio += bytes.size();
    }
    for (;;) {
        // Pages out of sync (-1) are skipped by the library; junk still counts
        // against the bytes allowed without audio.
        ogg_page page;
        const int result = ogg_sync_pageout(&m_state->sync, &page);
        if (result == 0)
            break;
        if (result < 0)
            continue;
        if (ogg_page_bos(&page))
            m_state->beginStream(ogg_page_serialno(&page));
        // Pages of other streams, or audio before any header, decode to nothing.
        if (!m_state->inStream || ogg_page_serialno(&page) != m_state->stream.serialno)
            continue;
        if (ogg_stream_pagein(&m_state->stream, &page) != 0)
            return fail();
        if (!takePage(sink))
            return false;
    }
    return m_bytesWithoutAudio <= MaxBytesWithoutAudio || fail();
}

bool VorbisDecoder::takePage(const Sink &sink)
{
    for (;;) {
        ogg_packet packet;
        const int result = ogg_stream_packetout(&m_state->stream, &packet);
        if (result == 0)
            return true;
        // A hole: pages went missing (a decoder started mid-stream). The next
        // packet still decodes; only its overlap with the lost one is gone.
        if (result < 0) {
            if (m_state->synthesis)
                vorbis_synthesis_restart(&m_state->dsp);
            continue;
        }
        State &s = *m_state;
        if (s.headers < 3) {
            if (vorbis_synthesis_headerin(&s.info, &s.comment, &packet) != 0)
                return fail();
            if (++s.headers == 3) {
                if (vorbis_synthesis_init(&s.dsp, &s.info) != 0)
                    return fail();
                vorbis_block_init(&s.dsp, &s.block);
                s.synthesis = true;
            }
            continue;
        }
        const int samples = s.synthesize(packet, m_mono, sink);
        if (samples < 0)
            return fail();
        if (samples > 0)
            m_bytesWithoutAudio = 0;
    }
}

bool VorbisDecoder::fail()
{
    m_failed = true;
    m_state = std::make_unique<State>();
    return false;
}
