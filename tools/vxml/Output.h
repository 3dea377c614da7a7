#pragma once
// Text leaving the tool: the library's wide strings become UTF-8, JSON strings are escaped.
#include <cstdio>
#include <string>
#include <string_view>

#include "vx/vx.h"

namespace vxml {

std::string ToUtf8(const vx::CVelStrW& text);
std::string ToString(const vx::CVelStr& text);
vx::CVelStr ToVelStr(const std::string& text);

// A JSON string literal, quotes included; text is UTF-8 and passes through unchanged apart
// from the characters JSON requires to be escaped.
std::string JsonString(std::string_view text);

void Write(std::FILE* stream, std::string_view text);

}  // namespace vxml
