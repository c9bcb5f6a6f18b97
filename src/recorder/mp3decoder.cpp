#include "recorder/mp3decoder.h"

#include <mpg123.h>

Mp3Decoder::Mp3Decoder(mpg123_handle *handle) : m_handle(handle) {}

Mp3Decoder::~Mp3Decoder()
{
    mpg123_delete(m_handle);
}

std::unique_ptr<Mp3Decoder> Mp3Decoder::create()
{
    // Needed by library versions before 1.27; harmless after.
    static const bool initialised = mpg123_init() == MPG123_OK;
    if (!initialised)
        return nullptr;
    int error = MPG123_OK;
    mpg123_handle *handle = mpg123_new(nullptr, &error);
    if (!handle)
        return nullptr;
    std::unique_ptr<Mp3Decoder> decoder(new Mp3Decoder(handle));
    // Gapless decoding would trim samples at a stream's start, so that the
    // output no longer lines up with the frames it came from.
    bool ready = mpg123_param(handle, MPG123_ADD_FLAGS, MPG123_QUIET, 0) == MPG123_OK &&
                 mpg123_param(handle, MPG123_REMOVE_FLAGS, MPG123_GAPLESS, 0) == MPG123_OK &&
                 mpg123_format_none(handle) == MPG123_OK;
    const long *rates = nullptr;
    size_t count = 0;
    mpg123_rates(&rates, &count);
    for (size_t i = 0; ready && i < count; ++i)
        ready = mpg123_format(handle, rates[i], MPG123_MONO, MPG123_ENC_FLOAT_32) == MPG123_OK;
    if (!ready || mpg123_open_feed(handle) != MPG123_OK)
        return nullptr;
    return decoder;
}

bool Mp3Decoder::decode(QByteArrayView bytes, const Sink &sink)
{
    if (m_failed)
        return false;
    if (!bytes.isEmpty() && mpg123_feed(m_handle, reinterpret_cast<const unsigned char *>(bytes.data()),
                                        bytes.size()) != MPG123_OK)
        return fail();
    m_bytesWithoutAudio += bytes.size();
    for (;;) {
        off_t frameNumber = 0;
        unsigned char *audio = nullptr;
        size_t size = 0;
        const int result = mpg123_decode_frame(m_handle, &frameNumber, &audio, &size);
        if (result == MPG123_NEED_MORE)
            break;
        if (result == MPG123_NEW_FORMAT) {
            long rate = 0;
            int channels = 0;
            int encoding = 0;
            mpg123_getformat(m_handle, &rate, &channels, &encoding);
            m_sampleRate = static_cast<int>(rate);
            continue;
        }
        if (result != MPG123_OK || m_sampleRate <= 0)
            return fail();
        if (size > 0) {
            m_bytesWithoutAudio = 0;
            sink(m_sampleRate, std::span(reinterpret_cast<const float *>(audio), size / sizeof(float)));
        }
    }
    return m_bytesWithoutAudio <= MaxBytesWithoutAudio || fail();
}

bool Mp3Decoder::fail()
{
    m_failed = true;
    return false;
}
