// CParse::ParseForBuf over any wide text.
#include <memory>

#include "FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::RunInput([&] {
        const std::unique_ptr<vx::CXmlDocument> document(
            vx::CParse::ParseForBuf(fuzz::WideFromBytes(data, size)));
    });
    return 0;
}
