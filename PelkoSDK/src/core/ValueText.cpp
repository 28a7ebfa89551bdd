#include "ValueText.h"

#include <charconv>
#include <cmath>

namespace ZMT::PkoAPI::Sim {

std::string FormatInteger(long long value)
{
    return std::to_string(value);
}

std::string FormatFloat(double value)
{
    char buffer[64];
    const std::to_chars_result result = std::to_chars(buffer, buffer + sizeof buffer, value);
    return std::string(buffer, result.ptr);
}

std::string FormatBoolean(bool value)
{
    return value ? "true" : "false";
}

bool ParseInteger(const std::string& text, long long& value)
{
    long long parsed = 0;
    const char* end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, parsed);
    if (text.empty() || result.ec != std::errc() || result.ptr != end)
        return false;
    value = parsed;
    return true;
}

bool ParseFloat(const std::string& text, double& value)
{
    double parsed = 0.0;
    const char* end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, parsed);
    if (text.empty() || result.ec != std::errc() || result.ptr != end || !std::isfinite(parsed))
        return false;
    value = parsed;
    return true;
}

bool ParseBoolean(const std::string& text, bool& value)
{
    if (text == "true")
        value = true;
    else if (text == "false")
        value = false;
    else
        return false;
    return true;
}

}  // namespace ZMT::PkoAPI::Sim
