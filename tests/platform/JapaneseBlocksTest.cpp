// The block converters of Shift_JIS and EUC-JP must give what the per-character ones give (which
// CodeConvTest holds to iconv): the same text, the same size, the same failures.
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "platform/PlatformTestUtil.h"
#include "vx/platform/CodeConv.h"
#include "vx/platform/CodeConvDetail.h"

namespace {

using namespace vcc;

const eCodeType kJapanese[] = {eShiftJIS, eEucJP, eIso2022JP};

std::optional<std::string> Convert(const std::string& src, eCodeType from, eCodeType to,
                                   std::optional<int> capacity = std::nullopt) {
    int size = 0;
    if (!GetBufSizeByByte(&size, static_cast<int>(src.size()), from, to)) return std::nullopt;
    size = capacity.value_or(size);
    std::string dst(static_cast<std::size_t>(size), '\0');
    if (!ConvertTo(src.data(), static_cast<int>(src.size()), from, dst.data(), &size, to)) {
        return std::nullopt;
    }
    dst.resize(static_cast<std::size_t>(size));
    return dst;
}

// The result of the block converters, after checking it against the per-character ones.
std::optional<std::string> ConvertBothWays(const std::string& src, eCodeType from, eCodeType to,
                                           std::optional<int> capacity = std::nullopt) {
    detail::UseBlockConverters(false);
    const auto reference = Convert(src, from, to, capacity);
    detail::UseBlockConverters(true);
    const auto blocks = Convert(src, from, to, capacity);
    EXPECT_EQ(blocks, reference) << "from " << from << " to " << to << ", "
                                 << src.size() << " bytes";
    return blocks;
}

std::string WideOf(const std::u16string& text) {
    std::string bytes;
    for (char16_t unit : text) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    return bytes;
}

// Records like the benchmark's: short runs of ASCII and Japanese, half-width katakana, JIS X 0212
// (EUC-JP only), Windows extensions (not in ISO-2022-JP), and runs longer than a block.
std::u16string Records() {
    std::u16string text = u"<?xml version=\"1.0\"?>\n<一覧>\n";
    const std::u16string names[] = {u"渡辺", u"ｱｲｳｴｵ", u"①纊", u"丂", u"～∥"};
    for (int record = 0; record < 40; ++record) {
        const std::u16string& name = names[record % 5];
        text += u"  <顧客 番号=\"" + std::u16string(record % 7, u'9') + u"\" 状態=\"有効\">";
        text += name + u"様" + std::u16string(record * 3 % 80, u'x') + name + u"</顧客>\n";
    }
    return text + u"</一覧>\n";
}

TEST(JapaneseBlocks, AgreeOnSamplesAndRecordsWithEveryFault) {
    const std::string samples[] = {
        platform_test::ReadFile(VX_SAMPLES_DIR "/japanese-sjis.xml"),
        platform_test::ReadFile(VX_SAMPLES_DIR "/japanese-eucjp.xml")};
    ASSERT_TRUE(ConvertBothWays(samples[0], eShiftJIS, eUtf16LE));
    ASSERT_TRUE(ConvertBothWays(samples[1], eEucJP, eUtf16LE));
    const std::string wide = WideOf(Records());
    for (eCodeType code : kJapanese) {
        SCOPED_TRACE(code);
        // Whole, then with a character the encoding lacks (ISO-2022-JP has no Windows
        // extensions, no code page 932 has JIS X 0212), which must fail the same way.
        const auto bytes = ConvertBothWays(wide, eUtf16LE, code);
        if (!bytes) continue;
        ASSERT_EQ(ConvertBothWays(*bytes, code, eUtf16LE), wide);
        // Short by one byte, cut after every byte, and broken by a stray byte at every offset.
        EXPECT_FALSE(ConvertBothWays(*bytes, code, eUtf16LE, static_cast<int>(wide.size()) - 1));
        EXPECT_FALSE(ConvertBothWays(wide, eUtf16LE, code, static_cast<int>(bytes->size()) - 1));
        for (std::size_t at = 1; at < 300; ++at) {
            ConvertBothWays(bytes->substr(0, bytes->size() - at), code, eUtf16LE);
            for (char stray : {'\x80', '\x8f', '\xa0', '\xff', '\x1b'}) {
                std::string broken = *bytes;
                broken[at * 7 % broken.size()] = stray;
                ConvertBothWays(broken, code, eUtf16LE);
            }
        }
    }
    ASSERT_FALSE(ConvertBothWays(wide, eUtf16LE, eShiftJIS));
}

// Every two bytes, and every UTF-16 unit, at each offset of a block, amid text that fills the
// blocks before and after it.
TEST(JapaneseBlocks, AgreeOnEveryCodeAtEveryOffset) {
    const std::string ascii(70, 'a');
    for (eCodeType code : {eShiftJIS, eEucJP}) {
        SCOPED_TRACE(code);
        const std::string kanji = *Convert(WideOf(u"漢字"), eUtf16LE, code);
        for (unsigned pair = 0; pair < 0x10000; ++pair) {
            const std::string before = ascii.substr(0, pair % 67) + kanji;
            const std::string bytes = before + static_cast<char>(pair >> 8) +
                                      static_cast<char>(pair & 0xFF) + kanji + ascii;
            ConvertBothWays(bytes, code, eUtf16LE);
            const std::string unit{static_cast<char>(pair & 0xFF), static_cast<char>(pair >> 8)};
            ConvertBothWays(WideOf(u"漢" + std::u16string(pair % 67, u'a')) + unit +
                                WideOf(std::u16string(70, u'b')),
                            eUtf16LE, code);
        }
    }
}

}  // namespace
