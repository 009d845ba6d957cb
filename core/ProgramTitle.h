// What the program calls itself.
#pragma once

namespace orvanto {

inline constexpr const char* kProgramTitle = "Orvanto";
inline constexpr const char* kProgramVersion = "1.3";

}  // namespace orvanto
