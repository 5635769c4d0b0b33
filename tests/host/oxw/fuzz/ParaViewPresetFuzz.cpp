// libFuzzer target of the ParaView colour-map reader (see PresetFormatFuzz.h).

#include "PresetFormatFuzz.h"

// Qt 5.15's JSON parser leaks the containers it was building when it meets an error inside
// nested arrays; the leak is Qt's (see PresetFileFuzz.cpp of the classification presets).
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:QJsonDocument::fromJson\n";
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    return presetfuzz::run(data, size, OXWTransferFunctionFile::Format::ParaView);
}
