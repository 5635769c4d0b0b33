// libFuzzer target of the ParaView colour-map reader (see PresetFormatFuzz.h).

#include "PresetFormatFuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    return presetfuzz::run(data, size, OXWTransferFunctionFile::Format::ParaView);
}
