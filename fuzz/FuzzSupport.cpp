#include "FuzzSupport.h"

#include <string>

namespace fuzz {

namespace {

std::size_t TrailBytes(unsigned lead) {
    if (lead >= 0xE0 && lead < 0xF0) return 2;
    if (lead >= 0xC0 && lead < 0xE0) return 1;
    return 0;
}

}  // namespace

vx::CVelStrW WideFromBytes(const std::uint8_t* data, std::size_t size) {
    std::u16string text;
    for (std::size_t i = 0; i < size;) {
        const unsigned lead = data[i];
        const std::size_t trail = TrailBytes(lead);
        bool whole = trail > 0 && i + trail < size;
        for (std::size_t k = 1; whole && k <= trail; ++k)
            whole = (data[i + k] & 0xC0) == 0x80;
        if (!whole) {
            text += static_cast<char16_t>(lead);
            ++i;
            continue;
        }
        unsigned unit = lead & (trail == 2 ? 0x0Fu : 0x1Fu);
        for (std::size_t k = 1; k <= trail; ++k)
            unit = unit << 6 | (data[i + k] & 0x3Fu);
        text += static_cast<char16_t>(unit);
        i += trail + 1;
    }
    return vx::CVelStrW(text.data(), static_cast<int>(text.size()));
}

}  // namespace fuzz

// No target opens a file that an input names, unless it says otherwise. A low nesting limit
// sends many inputs down the exception's path, where a leak would hide.
extern "C" int LLVMFuzzerInitialize(int*, char***) {
    vx::SetExternalLoading(false);
    vx::SetNestingLimit(64);
    return 0;
}
