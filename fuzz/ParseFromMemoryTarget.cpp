// CXmlElement::ParseFromMemory over any wide text, into an element that already holds a tree.
#include <cstdlib>

#include "FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::RunInput([&] {
        vx::CXmlElement element(nullptr);
        if (!element.ParseFromMemory(vx::CVelStrW(u"<old a=\"1\"><kept/>text</old>"), nullptr)) {
            std::abort();
        }
        vx::CParseErrorList errors;
        const bool parsed = element.ParseFromMemory(fuzz::WideFromBytes(data, size), &errors);
        // The result says whether there were errors; a refused fragment leaves the element be.
        if (parsed != errors.IsEmpty()) std::abort();
        if (parsed ? element.GetName().IsEmpty()
                   : element.GetName() != vx::CVelStrW(u"old") ||
                         element.GetChildren().GetSize() != 2) {
            std::abort();
        }
    });
    return 0;
}
