// Throughput of UTF-8 to UTF-16LE decoding on ASCII-heavy XML with some Japanese text.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include "vx/platform/CodeConv.h"

namespace {

constexpr std::size_t kTextBytes = 64u << 20;
constexpr int kRuns = 9;

std::string MakeText() {
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<records>\n";
    for (unsigned id = 0; text.size() < kTextBytes; ++id) {
        text += "  <record id=\"" + std::to_string(id) + "\" status=\"active\">\n";
        text += "    <name>Customer number " + std::to_string(id * 7919u % 100000u) + "</name>\n";
        text += "    <city>東京</city>\n";
        text += "    <note>Delivered on schedule; no further action required.</note>\n";
        text += "  </record>\n";
    }
    return text + "</records>\n";
}

}  // namespace

int main() {
    const std::string text = MakeText();
    const int length = static_cast<int>(text.size());
    int capacity = 0;
    if (!vcc::GetBufSizeByByte(&capacity, length, vcc::eUtf8, vcc::eUtf16LE)) return 1;
    std::vector<char> wide(static_cast<std::size_t>(capacity));

    std::vector<double> rates;
    for (int run = 0; run < kRuns; ++run) {
        int size = capacity;
        const auto start = std::chrono::steady_clock::now();
        const bool ok =
            vcc::ConvertTo(text.data(), length, vcc::eUtf8, wide.data(), &size, vcc::eUtf16LE);
        const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
        if (!ok) return 1;
        rates.push_back(length / 1e6 / elapsed.count());
    }
    std::sort(rates.begin(), rates.end());
    std::printf("UTF-8 -> UTF-16LE: %.1f MB of input, median %.0f MB/s over %d runs\n",
                length / 1e6, rates[kRuns / 2], kRuns);
}
