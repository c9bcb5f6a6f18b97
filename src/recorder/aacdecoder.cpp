#include "recorder/aacdecoder.h"

#include <neaacdec.h>

namespace {

constexpr qsizetype HeaderLength = 7;

// The length an ADTS header at `p` gives its frame (header included), or 0
// when `p` does not hold one: sync word, layer 0 and a length past the header.
qsizetype adtsFrameLength(const unsigned char *p)
{
    if (p[0] != 0xFF || (p[1] & 0xF6) != 0xF0)
        return 0;
    const qsizetype length = ((p[3] & 0x03) << 11) | (p[4] << 3) | (p[5] >> 5);
    return length > HeaderLength ? length : 0;
}

} // namespace

AacDecoder::AacDecoder(void *handle) : m_handle(handle) {}

AacDecoder::~AacDecoder()
{
    NeAACDecClose(m_handle);
}

std::unique_ptr<AacDecoder> AacDecoder::create()
{
    NeAACDecHandle handle = NeAACDecOpen();
    if (!handle)
        return nullptr;
    std::unique_ptr<AacDecoder> decoder(new AacDecoder(handle));
    NeAACDecConfigurationPtr config = NeAACDecGetCurrentConfiguration(handle);
    config->outputFormat = FAAD_FMT_FLOAT;
    config->downMatrix = 1;
    if (!NeAACDecSetConfiguration(handle, config))
        return nullptr;
    return decoder;
}

bool AacDecoder::decode(QByteArrayView bytes, const Sink &sink)
{
    if (m_failed)
        return false;
    m_pending.append(bytes);
    m_bytesWithoutAudio += bytes.size();
    qsizetype at = 0;
    while (m_pending.size() - at >= HeaderLength) {
        const auto *p = reinterpret_cast<const unsigned char *>(m_pending.constData()) + at;
        const qsizetype length = adtsFrameLength(p);
        if (length == 0) {
            ++at;
            continue;
        }
        if (m_pending.size() - at < length)
            break;
        m_pending.remove(0, at);
        at = 0;
        if (!decodeFrame(length, sink))
            return false;
        m_pending.remove(0, length);
    }
    m_pending.remove(0, at);
    return m_bytesWithoutAudio <= MaxBytesWithoutAudio || fail();
}

bool AacDecoder::decodeFrame(qsizetype length, const Sink &sink)
{
    auto *frame = reinterpret_cast<unsigned char *>(m_pending.data());
    if (!m_initialised) {
        unsigned long rate = 0;
        unsigned char channels = 0;
        if (NeAACDecInit(m_handle, frame, static_cast<unsigned long>(length), &rate, &channels) < 0)
            return fail();
        m_initialised = true;
    }
    NeAACDecFrameInfo info{};
    const auto *samples = static_cast<const float *>(
        NeAACDecDecode(m_handle, &info, frame, static_cast<unsigned long>(length)));
    if (info.error != 0)
        return fail();
    if (!samples || info.samples == 0 || info.channels == 0)
        return true;
    // Rate and channels come from each frame: SBR doubles the rate, and
    // parametric stereo turns a mono stream into two channels.
    const qsizetype count = static_cast<qsizetype>(info.samples / info.channels);
    m_mono.assign(static_cast<size_t>(count), 0.0f);
    for (qsizetype i = 0; i < count; ++i) {
        float sum = 0;
        for (int c = 0; c < info.channels; ++c)
            sum += samples[i * info.channels + c];
        m_mono[static_cast<size_t>(i)] = sum / static_cast<float>(info.channels);
    }
    m_bytesWithoutAudio = 0;
    sink(static_cast<int>(info.samplerate), m_mono);
    return true;
}

bool AacDecoder::fail()
{
    m_failed = true;
    m_pending.clear();
    return false;
}
