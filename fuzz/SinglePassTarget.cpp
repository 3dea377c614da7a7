// Any wide text read by the single-pass reader and by the productions alone: the two dumps must
// be equal.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "CanonicalDump.h"
#include "FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const vx::CVelStrW text = fuzz::WideFromBytes(data, size);
    const std::string designed = dump::ParseAndDump(text, false);
    vx::Finalize();
    const std::string singlePass = dump::ParseAndDump(text, true);
    vx::Finalize();
    if (designed != singlePass) {
        std::fprintf(stderr, "== productions\n%s== single pass\n%s", designed.c_str(),
                     singlePass.c_str());
        std::abort();
    }
    return 0;
}
