// Decodes a Shift_JIS file through the conversion layer and prints it as UTF-8.
#include <cstdio>

#include "vx/vx.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: decode_sample FILE\n");
        return 2;
    }
    vx::CVelStr bytes;
    if (!bytes.LoadFromFile(argv[1])) {
        std::fprintf(stderr, "decode_sample: cannot read %s\n", argv[1]);
        return 1;
    }
    int size = 0;
    if (!vcc::GetBufSizeByByte(&size, bytes.GetLength(), vcc::eShiftJIS, vcc::eUtf16LE)) return 1;
    vx::CVelStrW text;
    char16_t* units = text.GetBuffer(size / 2);
    if (!vcc::ConvertTo(bytes.c_str(), bytes.GetLength(), vcc::eShiftJIS, units, &size,
                        vcc::eUtf16LE)) {
        std::fprintf(stderr, "decode_sample: %s is not valid Shift_JIS\n", argv[1]);
        return 1;
    }
    text.Truncate(size / 2);
    std::fputs(vx::CVelStr(text).c_str(), stdout);
    vx::Finalize();
    return 0;
}
