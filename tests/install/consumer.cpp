// A program outside the repository that uses an installed vx through the umbrella header.
#include <vx/vx.h>

#include <cstdio>

int main() {
    vx::Initialize();
    const char sjis[] = "\x93\xfa\x96\x7b";  // "日本" in Shift_JIS
    int size = 0;
    if (!vcc::GetBufSizeByByte(&size, 4, vcc::eShiftJIS, vcc::eUtf16LE)) return 1;
    vx::CVelStrW text;
    char16_t* out = text.GetBuffer(size / 2);
    if (!vcc::ConvertTo(sjis, 4, vcc::eShiftJIS, out, &size, vcc::eUtf16LE)) return 1;
    text.Truncate(size / 2);
    const bool ok = text == vx::CVelStrW(u"日本");
    vx::Finalize();
    std::puts(ok ? "consumer: ok" : "consumer: wrong text");
    return ok ? 0 : 1;
}
