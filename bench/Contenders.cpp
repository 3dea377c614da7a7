#include "Contenders.h"

#include <expat.h>
#include <iconv.h>
#include <libxml/parser.h>
#include <libxml/xmlerror.h>
#include <tinyxml2.h>
#include <pugixml.hpp>

#include <malloc.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>

#include "vx/dom/XmlDocument.h"
#include "vx/parse/Parse.h"
#include "vx/parse/Settings.h"
#include "vx/text/Decode.h"

namespace bench {

namespace {

// Decoding alone, into a new wide string: what any reader must do before parsing.
Outcome RunFloor(const Input& input) {
    vx::CVelStrW text;
    const bool ok = vx::DecodeToWide(input.bytes.data(), static_cast<int>(input.bytes.size()),
                                     input.code, text) == vx::eDecodeResult::eDecoded;
    return {ok ? 0 : 1, !ok};
}

Outcome VxOutcome(const vx::CXmlDocument* document) {
    const vx::CParseErrorList errors = document->GetErrList();
    Outcome outcome{errors.GetSize(), false};
    for (int i = 0; i < errors.GetSize(); ++i) {
        if (errors.GetAt(i).GetErrCode() == vx::CParseError::eErrParseStopped) {
            outcome.stopped = true;
        }
    }
    return outcome;
}

Outcome RunVxBuf(const Input& input) {
    const std::unique_ptr<vx::CXmlDocument> document(vx::CParse::ParseForBuf(input.text));
    return VxOutcome(document.get());
}

// vx buf with the single-pass reader off: every element read by the grammar's productions.
Outcome RunVxProductions(const Input& input) {
    vx::SetSinglePassReading(false);
    const std::unique_ptr<vx::CXmlDocument> document(vx::CParse::ParseForBuf(input.text));
    vx::SetSinglePassReading(true);
    return VxOutcome(document.get());
}

Outcome RunVxFile(const Input& input) {
    const std::unique_ptr<vx::CXmlDocument> document(
        vx::CParse::ParseForFile(vx::CVelStr(input.path.c_str())));
    return VxOutcome(document.get());
}

// Counts libxml2's diagnostics instead of printing them.
long g_libxml2Errors = 0;
void CountLibxml2Error(void*, xmlErrorPtr) {
    ++g_libxml2Errors;
}

Outcome RunLibxml2(const Input& input) {
    xmlSetStructuredErrorFunc(nullptr, CountLibxml2Error);
    g_libxml2Errors = 0;
    // HUGE lifts the nesting limit of 256; NOENT expands entities into text, as vx does;
    // RECOVER reads on after an error, reporting every one, and keeps the tree.
    const xmlDocPtr document =
        xmlReadMemory(input.bytes.data(), static_cast<int>(input.bytes.size()), nullptr, nullptr,
                      XML_PARSE_HUGE | XML_PARSE_NOENT | XML_PARSE_NONET | XML_PARSE_RECOVER);
    xmlFreeDoc(document);
    return {g_libxml2Errors, document == nullptr};
}

// Expat, pugixml and TinyXML-2 read no Shift_JIS: such input is converted to UTF-8 first, as
// their users would have to, and the conversion is part of the time.
std::string ShiftJisToUtf8(const std::string& bytes) {
    const iconv_t cd = iconv_open("UTF-8", "SHIFT_JIS");
    if (cd == reinterpret_cast<iconv_t>(-1)) throw std::runtime_error("iconv_open");
    std::string out(bytes.size() * 3 / 2 + 16, '\0');  // 2 bytes of Shift_JIS give at most 3
    char* in = const_cast<char*>(bytes.data());
    std::size_t inLeft = bytes.size();
    char* to = out.data();
    std::size_t toLeft = out.size();
    const std::size_t result = iconv(cd, &in, &inLeft, &to, &toLeft);
    iconv_close(cd);
    if (result == static_cast<std::size_t>(-1)) throw std::runtime_error("iconv");
    out.resize(out.size() - toLeft);
    return out;
}

template <class Parse>
Outcome WithUtf8(const Input& input, Parse parse) {
    if (input.code == vcc::eShiftJIS) return parse(ShiftJisToUtf8(input.bytes), true);
    return parse(input.bytes, false);
}

// A SAX pass that builds nothing; the handlers only count, so that the events are delivered.
Outcome RunExpat(const Input& input) {
    return WithUtf8(input, [](const std::string& bytes, bool converted) {
        // A converted text still declares Shift_JIS; the parser is told what it really is.
        const XML_Parser parser = XML_ParserCreate(converted ? "UTF-8" : nullptr);
        long events = 0;
        XML_SetUserData(parser, &events);
        XML_SetElementHandler(
            parser,
            [](void* data, const XML_Char*, const XML_Char**) { ++*static_cast<long*>(data); },
            nullptr);
        XML_SetCharacterDataHandler(
            parser, [](void* data, const XML_Char*, int) { ++*static_cast<long*>(data); });
        const bool ok = XML_Parse(parser, bytes.data(), static_cast<int>(bytes.size()), XML_TRUE) ==
                        XML_STATUS_OK;
        XML_ParserFree(parser);
        return Outcome{ok ? 0 : 1, !ok};
    });
}

Outcome RunPugixml(const Input& input) {
    return WithUtf8(input, [](const std::string& bytes, bool) {
        pugi::xml_document document;
        const bool ok = document.load_buffer(bytes.data(), bytes.size(), pugi::parse_default,
                                             pugi::encoding_utf8);
        return Outcome{ok ? 0 : 1, !ok};
    });
}

Outcome RunTinyxml2(const Input& input) {
    return WithUtf8(input, [](const std::string& bytes, bool) {
        tinyxml2::XMLDocument document;
        const bool ok = document.Parse(bytes.data(), bytes.size()) == tinyxml2::XML_SUCCESS;
        return Outcome{ok ? 0 : 1, !ok};
    });
}

}  // namespace

const std::vector<Contender>& Contenders() {
    static const std::vector<Contender> contenders = {
        {"decode floor", Contender::eBytes, RunFloor},
        {"vx buf", Contender::eText, RunVxBuf},
        {"vx file", Contender::eFileOnly, RunVxFile},
        {"vx productions", Contender::eText, RunVxProductions},
        {"libxml2", Contender::eBytes, RunLibxml2},
        {"expat", Contender::eBytes, RunExpat},
        {"pugixml", Contender::eBytes, RunPugixml},
        {"tinyxml2", Contender::eBytes, RunTinyxml2},
    };
    return contenders;
}

const Contender* FindContender(const std::string& name) {
    for (const Contender& contender : Contenders()) {
        if (name == contender.name) return &contender;
    }
    return nullptr;
}

Input LoadInput(const std::string& path, bool withBytes, bool withText) {
    Input input;
    input.path = path;
    const std::size_t slash = path.find_last_of('/');
    input.name = path.substr(slash == std::string::npos ? 0 : slash + 1);
    input.name = input.name.substr(0, input.name.rfind(".xml"));
    bool supported = false;
    if (!vx::CParse::CheckCodeType(vx::CVelStr(path.c_str()), supported, input.code) ||
        !supported || (input.code != vcc::eUtf8 && input.code != vcc::eShiftJIS)) {
        throw std::runtime_error(path + ": not a UTF-8 or Shift_JIS document");
    }
    std::ifstream file(path, std::ios::binary);
    if (!file.is_open()) throw std::runtime_error(path + ": cannot read");
    std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    if (withText) {
        const vx::eDecodeResult decoded =
            vx::DecodeToWide(bytes.data(), static_cast<int>(bytes.size()), input.code, input.text);
        if (decoded == vx::eDecodeResult::eTooLarge) throw std::runtime_error(path + ": too large");
        if (decoded != vx::eDecodeResult::eDecoded) {
            throw std::runtime_error(path + ": cannot decode");
        }
    }
    if (withBytes) input.bytes = std::move(bytes);
    return input;
}

void KeepFreedMemory() {
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
    mallopt(M_MMAP_THRESHOLD, 32 << 20);
}

int RunMain(const char* program, int (*main)(int, char**), int argc, char** argv) {
    try {
        return main(argc, argv);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "%s: %s\n", program, e.what());
        return 1;
    }
}

}  // namespace bench
