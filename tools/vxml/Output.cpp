#include "Output.h"

namespace vxml {

std::string ToUtf8(const vx::CVelStrW& text) {
    return ToString(vx::CVelStr(text));
}

std::string ToString(const vx::CVelStr& text) {
    return std::string(text.c_str(), text.GetLength());
}

vx::CVelStr ToVelStr(const std::string& text) {
    return vx::CVelStr(text.c_str(), static_cast<int>(text.size()));
}

std::string JsonString(std::string_view text) {
    std::string out = "\"";
    for (const char ch : text) {
        switch (ch) {
            case '"':
                out += "\\\"";
                break;
            case '\\':
                out += "\\\\";
                break;
            case '\n':
                out += "\\n";
                break;
            case '\r':
                out += "\\r";
                break;
            case '\t':
                out += "\\t";
                break;
            default:
                if (static_cast<unsigned char>(ch) < 0x20) {
                    char escaped[8];
                    std::snprintf(escaped, sizeof escaped, "\\u%04x", ch);
                    out += escaped;
                } else {
                    out += ch;
                }
        }
    }
    return out + "\"";
}

void Write(std::FILE* stream, std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stream);
}

}  // namespace vxml
