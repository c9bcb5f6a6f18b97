#include "recorder/audiodecoder.h"

#include "recorder/aacdecoder.h"
#include "recorder/mp3decoder.h"
#include "recorder/vorbisdecoder.h"

std::unique_ptr<AudioDecoder> AudioDecoder::create(StreamFormat format)
{
    switch (format) {
    case StreamFormat::Mp3:
        return Mp3Decoder::create();
    case StreamFormat::Aac:
        return AacDecoder::create();
    case StreamFormat::Ogg:
        return std::make_unique<VorbisDecoder>();
    }
    return nullptr;
}
