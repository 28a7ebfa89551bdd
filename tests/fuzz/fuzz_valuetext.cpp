// The SDK's value texts: whatever a text is, parsing never crashes, and a
// value that parses prints as a text that parses back to the same value.

#include "ValueText.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

using namespace ZMT::PkoAPI::Sim;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    long long integer = 0;
    if (ParseInteger(text, integer)) {
        long long again = 0;
        if (!ParseInteger(FormatInteger(integer), again) || again != integer)
            std::abort();
    }
    double number = 0.0;
    if (ParseFloat(text, number)) {
        double again = 0.0;
        if (!std::isfinite(number) || !ParseFloat(FormatFloat(number), again) || again != number)
            std::abort();
    }
    bool flag = false;
    if (ParseBoolean(text, flag) && FormatBoolean(flag) != text)
        std::abort();
    return 0;
}
