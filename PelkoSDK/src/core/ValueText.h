#ifndef PKOAPI_SRC_VALUETEXT_H
#define PKOAPI_SRC_VALUETEXT_H

// Value <-> text conversions shared by the simulated backend. The texts are
// the journal's format, so a text read back parses to exactly the same value.

#include <string>

namespace ZMT::PkoAPI::Sim {

std::string FormatInteger(long long value);
// Shortest text that reads back to the same double ("0.1", "1e+08", "nan").
std::string FormatFloat(double value);
std::string FormatBoolean(bool value);

// Each parses the whole text; false (value untouched) when it does not fit.
bool ParseInteger(const std::string& text, long long& value);
// Finite values only.
bool ParseFloat(const std::string& text, double& value);
// "true" or "false" only.
bool ParseBoolean(const std::string& text, bool& value);

}  // namespace ZMT::PkoAPI::Sim

#endif
