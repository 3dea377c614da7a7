// The block converters of Shift_JIS and EUC-JP, at each level the processor runs, against the
// per-character ones: the input is decoded from each Japanese encoding and, read as UTF-16LE,
// encoded to each; the results (bytes, size, failure) must be the same, also into a buffer one
// byte too small.
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>

#include "vx/platform/CodeConv.h"
#include "vx/platform/CodeConvDetail.h"

namespace {

struct Conversion {
    const std::string& src;
    vcc::eCodeType from;
    vcc::eCodeType to;

    // Into a buffer of the size GetBufSizeByByte gives, or of `capacity` bytes.
    std::optional<std::string> Run(std::optional<int> capacity = std::nullopt) const {
        int size = 0;
        const int length = static_cast<int>(src.size());
        if (!vcc::GetBufSizeByByte(&size, length, from, to)) return std::nullopt;
        size = capacity.value_or(size);
        std::string dst(static_cast<std::size_t>(size), '\0');
        if (!vcc::ConvertTo(src.data(), length, from, dst.data(), &size, to)) return std::nullopt;
        dst.resize(static_cast<std::size_t>(size));
        return dst;
    }

    void CheckPathsAgree() const {
        using vcc::detail::BlockLevel;
        vcc::detail::UseBlockConverters(BlockLevel::kNone);
        const auto whole = Run();
        const int tight = whole ? static_cast<int>(whole->size()) - 1 : 0;
        const auto cut = tight > 0 ? Run(tight) : std::nullopt;
        for (BlockLevel level = BlockLevel::kSse2; level <= vcc::detail::BestBlockLevel();
             level = static_cast<BlockLevel>(static_cast<int>(level) + 1)) {
            vcc::detail::UseBlockConverters(level);
            if (Run() != whole || (tight > 0 && Run(tight) != cut)) std::abort();
        }
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    const std::string wide = bytes.substr(0, size & ~std::size_t{1});
    for (vcc::eCodeType code : {vcc::eShiftJIS, vcc::eEucJP, vcc::eIso2022JP}) {
        Conversion{bytes, code, vcc::eUtf16LE}.CheckPathsAgree();
        Conversion{wide, vcc::eUtf16LE, code}.CheckPathsAgree();
    }
    return 0;
}
