#pragma once

#include <string>

namespace vesk::editor {

// Times as the user reads them. What is negative or no number reads as 0.

/// A tick of the ruler: minutes and whole seconds, "1:05", and with `tenths` "1:05.5".
std::string rulerText(double seconds, bool tenths);

/// Minutes and seconds, rounded to hundredths: "01:05.25".
std::string playheadText(double seconds);

/// Minutes, seconds and the hundredths that are full: "01:05.25".
std::string transportText(double seconds);

}  // namespace vesk::editor
