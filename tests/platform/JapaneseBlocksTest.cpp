// The block converters of Shift_JIS and EUC-JP must give what the per-character ones give (which
// CodeConvTest holds to iconv): the same text, the same size, the same failures.
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "platform/CodeConvTestUtil.h"
#include "platform/PlatformTestUtil.h"
#include "vx/platform/CodeConvDetail.h"

namespace {

using namespace vcc;
using platform_test::Convert;
using platform_test::Wide;

// The result of the per-character converters, after checking the block ones of every level this
// processor runs against it.
std::optional<std::string> ConvertBothWays(const std::string& src, eCodeType from, eCodeType to,
                                           std::optional<int> capacity = std::nullopt) {
    using detail::BlockLevel;
    detail::UseBlockConverters(BlockLevel::kNone);
    const auto reference = Convert(src, from, to, capacity);
    for (BlockLevel level = BlockLevel::kSse2; level <= detail::BestBlockLevel();
         level = static_cast<BlockLevel>(static_cast<int>(level) + 1)) {
        detail::UseBlockConverters(level);
        // Not EXPECT_EQ: the texts run to kilobytes.
        EXPECT_TRUE(Convert(src, from, to, capacity) == reference)
            << "level " << static_cast<int>(level) << " from " << from << " to " << to << ", "
            << src.size() << " bytes";
    }
    return reference;
}

// Records like the benchmark's: short runs of ASCII and Japanese, with runs longer than a block
// and the characters only some encodings hold in `extra`.
std::string Records(const std::u16string& extra) {
    std::u16string text = u"<?xml version=\"1.0\"?>\n<一覧>\n";
    const std::u16string names[] = {u"渡辺", u"～∥", extra};
    for (int record = 0; record < 40; ++record) {
        const std::u16string& name = names[record % 3];
        text += u"  <顧客 番号=\"" + std::u16string(record % 7, u'9') + u"\" 状態=\"有効\">";
        text += name + u"様" + std::u16string(record * 3 % 80, u'x') + name + u"</顧客>\n";
    }
    return Wide(text + u"</一覧>\n");
}

TEST(JapaneseBlocks, AgreeOnSamplesAndRecordsWithEveryFault) {
    EXPECT_TRUE(ConvertBothWays(platform_test::ReadFile(VX_SAMPLES_DIR "/japanese-sjis.xml"),
                                eShiftJIS, eUtf16LE));
    EXPECT_TRUE(ConvertBothWays(platform_test::ReadFile(VX_SAMPLES_DIR "/japanese-eucjp.xml"),
                                eEucJP, eUtf16LE));
    // Half-width katakana, Windows extensions (in EUC-JP partly as three-byte codes), and JIS X
    // 0212, where the encoding holds them.
    const struct {
        eCodeType code;
        std::u16string extra;
    } cases[] = {{eShiftJIS, u"ｱｲｳ①纊"}, {eEucJP, u"ｱｲｳ①纊丂"}, {eIso2022JP, u"漢字"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.code);
        const std::string wide = Records(c.extra);
        const auto bytes = ConvertBothWays(wide, eUtf16LE, c.code);
        ASSERT_TRUE(bytes);
        ASSERT_EQ(ConvertBothWays(*bytes, c.code, eUtf16LE), wide);
        // Short by one byte, cut after every byte, and broken by a stray byte at every offset.
        EXPECT_FALSE(ConvertBothWays(*bytes, c.code, eUtf16LE, static_cast<int>(wide.size()) - 1));
        EXPECT_FALSE(ConvertBothWays(wide, eUtf16LE, c.code, static_cast<int>(bytes->size()) - 1));
        for (std::size_t at = 1; at < 300; ++at) {
            ConvertBothWays(bytes->substr(0, bytes->size() - at), c.code, eUtf16LE);
            for (char stray : {'\x80', '\x8f', '\xa0', '\xff', '\x1b'}) {
                std::string broken = *bytes;
                broken[at * 7 % broken.size()] = stray;
                ConvertBothWays(broken, c.code, eUtf16LE);
            }
        }
    }
    // Characters the encoding lacks fail alike.
    EXPECT_FALSE(ConvertBothWays(Records(u"丂"), eUtf16LE, eShiftJIS));
    EXPECT_FALSE(ConvertBothWays(Records(u"￢¥"), eUtf16LE, eEucJP));
    EXPECT_FALSE(ConvertBothWays(Records(u"ｱ"), eUtf16LE, eIso2022JP));
}

// Every two bytes, and every UTF-16 unit, at each offset of a block, amid text that fills the
// blocks before and after it.
TEST(JapaneseBlocks, AgreeOnEveryCodeAtEveryOffset) {
    const std::string ascii(70, 'a');
    for (eCodeType code : {eShiftJIS, eEucJP}) {
        SCOPED_TRACE(code);
        const std::string kanji = *Convert(Wide(u"漢字"), eUtf16LE, code);
        for (unsigned pair = 0; pair < 0x10000; ++pair) {
            const std::string before = ascii.substr(0, pair % 67) + kanji;
            const std::string bytes = before + static_cast<char>(pair >> 8) +
                                      static_cast<char>(pair & 0xFF) + kanji + ascii;
            ConvertBothWays(bytes, code, eUtf16LE);
            const std::string unit{static_cast<char>(pair & 0xFF), static_cast<char>(pair >> 8)};
            ConvertBothWays(Wide(u"漢" + std::u16string(pair % 67, u'a')) + unit +
                                Wide(std::u16string(70, u'b')),
                            eUtf16LE, code);
        }
    }
}

}  // namespace
