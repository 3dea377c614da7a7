// The Japanese encodings: vx's conversions against glibc iconv on the same bytes in the same run,
// and ParseForFile of a Shift_JIS document against iconv's decoding of it alone.
//
// usage: japanese_bench [--runs N] SHIFT_JIS.xml
// The EUC-JP and ISO-2022-JP bytes are the document's text encoded by vx.
#include <iconv.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>

#include "Timing.h"
#include "vx/dom/XmlDocument.h"
#include "vx/parse/Parse.h"
#include "vx/platform/CodeConv.h"
#include "vx/text/CommonFunc.h"
#include "vx/text/Decode.h"

namespace {

// One direction of iconv into a buffer of the caller's.
class Iconv {
  public:
    Iconv(const char* to, const char* from) : m_cd(iconv_open(to, from)) {
        if (m_cd == reinterpret_cast<iconv_t>(-1)) throw std::runtime_error("iconv_open");
    }
    ~Iconv() { iconv_close(m_cd); }
    Iconv(const Iconv&) = delete;
    Iconv& operator=(const Iconv&) = delete;

    void Convert(const std::string& src, std::string& dst) {
        iconv(m_cd, nullptr, nullptr, nullptr, nullptr);
        char* in = const_cast<char*>(src.data());
        std::size_t inLeft = src.size();
        char* out = dst.data();
        std::size_t outLeft = dst.size();
        if (iconv(m_cd, &in, &inLeft, &out, &outLeft) != 0 || inLeft != 0) {
            throw std::runtime_error("iconv refused the text");
        }
    }

  private:
    iconv_t m_cd;
};

// vx's conversion into a buffer of the caller's, sized as the library asks; the bytes written.
std::size_t VxConvert(const std::string& src, vcc::eCodeType from, vcc::eCodeType to,
                      std::string& dst) {
    int size = 0;
    if (!vcc::GetBufSizeByByte(&size, static_cast<int>(src.size()), from, to)) {
        throw std::runtime_error("size");
    }
    dst.resize(static_cast<std::size_t>(size));
    if (!vcc::ConvertTo(src.data(), static_cast<int>(src.size()), from, dst.data(), &size, to)) {
        throw std::runtime_error("vx refused the text");
    }
    return static_cast<std::size_t>(size);
}

std::string VxConverted(const std::string& src, vcc::eCodeType from, vcc::eCodeType to) {
    std::string dst;
    dst.resize(VxConvert(src, from, to, dst));
    return dst;
}

struct Encoding {
    const char* name;
    vcc::eCodeType code;
    const char* iconvName;
};

const Encoding kEncodings[] = {{"Shift_JIS", vcc::eShiftJIS, "CP932"},
                               {"EUC-JP", vcc::eEucJP, "EUC-JP-MS"},
                               {"ISO-2022-JP", vcc::eIso2022JP, "ISO-2022-JP"}};

std::string Rate(double mb, double seconds) {
    char text[32];
    std::snprintf(text, sizeof text, "%.0f", mb / seconds);
    return text;
}

// One row: decoding and encoding of the text in one encoding, by vx and by iconv.
void PrintRow(const Encoding& encoding, const std::string& wide, int runs) {
    const std::string bytes = VxConverted(wide, vcc::eUtf16LE, encoding.code);
    const double mb = bytes.size() / 1e6;
    std::string decoded, encoded;  // vx's buffers
    std::string out(2 * bytes.size() + wide.size(), '\0');
    Iconv decoder("UTF-16LE", encoding.iconvName);
    Iconv encoder(encoding.iconvName, "UTF-16LE");
    const double vxDecode = bench::MedianSeconds(
        runs, [&] { VxConvert(bytes, encoding.code, vcc::eUtf16LE, decoded); });
    const double iconvDecode = bench::MedianSeconds(runs, [&] { decoder.Convert(bytes, out); });
    const double vxEncode =
        bench::MedianSeconds(runs, [&] { VxConvert(wide, vcc::eUtf16LE, encoding.code, encoded); });
    const double iconvEncode = bench::MedianSeconds(runs, [&] { encoder.Convert(wide, out); });
    std::printf("| %-11s | %4.1f | %9s | %12s | %5.1f | %9s | %12s | %5.1f |\n", encoding.name, mb,
                Rate(mb, vxDecode).c_str(), Rate(mb, iconvDecode).c_str(), iconvDecode / vxDecode,
                Rate(mb, vxEncode).c_str(), Rate(mb, iconvEncode).c_str(), iconvEncode / vxEncode);
}

void PrintParseForFile(const std::string& path, const std::string& bytes, int runs) {
    std::string out(2 * bytes.size(), '\0');
    Iconv decoder("UTF-16LE", "CP932");
    const double iconvDecode = bench::MedianSeconds(runs, [&] { decoder.Convert(bytes, out); });
    const double parse = bench::MedianSeconds(runs, [&] {
        std::unique_ptr<vx::CXmlDocument>(vx::CParse::ParseForFile(vx::CVelStr(path.c_str())));
    });
    const double mb = bytes.size() / 1e6;
    const double ratio = parse / iconvDecode;
    std::printf(
        "\nParseForFile of the Shift_JIS document: %.1f ms (%s MB/s); iconv's decoding of it "
        "alone: %.1f ms (%s MB/s); ParseForFile takes %.1f times as long.\n",
        parse * 1e3, Rate(mb, parse).c_str(), iconvDecode * 1e3, Rate(mb, iconvDecode).c_str(),
        ratio);
    std::printf("- ParseForFile at most 2 times iconv's decoding alone: %s (%.2f times)\n",
                ratio <= 2 ? "met" : "NOT met", ratio);
}

// ParseForFile's steps, timed apart: detecting the encoding (as CheckCodeType does), reading
// the file, decoding into a new string, line ends, and the parse with the tree's deletion, as in
// the row above.
void PrintParseForFileSteps(const std::string& path, int runs) {
    const vx::CVelStr name(path.c_str());
    bool supported = false;
    vcc::eCodeType code = vcc::eUtf16LE;
    vx::CVelStr bytes;
    vx::CVelStrW text;
    const double detect =
        bench::MedianSeconds(runs, [&] { vx::CParse::CheckCodeType(name, supported, code); });
    const double read = bench::MedianSeconds(runs, [&] { bytes.LoadFromFile(path.c_str()); });
    const double decode = bench::MedianSeconds(runs, [&] {
        text = vx::CVelStrW();
        vx::DecodeToWide(bytes.c_str(), bytes.GetLength(), code, text);
    });
    const double lineEnds = bench::MedianSeconds(runs, [&] { vx::NormalizeRetCode(text); });
    const double parse = bench::MedianSeconds(runs, [&] { delete vx::CParse::ParseForBuf(text); });
    std::printf(
        "Its steps: detecting %.1f ms, reading %.1f ms, decoding %.1f ms, line ends %.1f ms, "
        "parsing and deleting the tree %.1f ms.\n",
        detect * 1e3, read * 1e3, decode * 1e3, lineEnds * 1e3, parse * 1e3);
}

int Run(int argc, char** argv) {
    int runs = 9;
    std::string path;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--runs" && i + 1 < argc) {
            runs = std::stoi(argv[++i]);
        } else {
            path = arg;
        }
    }
    if (path.empty() || runs < 1) {
        std::fputs("usage: japanese_bench [--runs N] SHIFT_JIS.xml\n", stderr);
        return 2;
    }
    std::ifstream file(path, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(file)),
                            std::istreambuf_iterator<char>());
    const std::string wide = VxConverted(bytes, vcc::eShiftJIS, vcc::eUtf16LE);
    std::printf("MB/s of the encoded bytes, median of %d runs; ÷ is iconv's time over vx's:\n\n",
                runs);
    std::puts(
        "| encoding    |   MB | vx decode | iconv decode |     ÷ "
        "| vx encode | iconv encode |     ÷ |");
    std::puts(
        "| :---------- | ---: | --------: | -----------: | ----: "
        "| --------: | -----------: | ----: |");
    for (const Encoding& encoding : kEncodings)
        PrintRow(encoding, wide, runs);
    PrintParseForFile(path, bytes, runs);
    PrintParseForFileSteps(path, runs);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return Run(argc, argv);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "japanese_bench: %s\n", e.what());
        return 1;
    }
}
