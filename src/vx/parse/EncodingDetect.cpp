// Which encoding a file is in, from its first bytes and its declaration's encoding="...".
#include <cstdint>
#include <cstring>

#include "vx/parse/Parse.h"
#include "vx/platform/File.h"

namespace vx {

namespace {

struct CSignature {
    unsigned char bytes[4];
    bool supported;
    vcc::eCodeType code;
};

// Tested in this order; UTF-16 and UCS-4 big-endian and the odd UCS-4 orders are refused.
constexpr CSignature kSignatures[] = {
    {{0x00, 0x00, 0x00, 0x3C}, false, vcc::eUcs4LE},
    {{0x3C, 0x00, 0x00, 0x00}, true, vcc::eUcs4LE},
    {{0x00, 0x00, 0x3C, 0x00}, false, vcc::eUcs4LE},
    {{0x00, 0x3C, 0x00, 0x00}, false, vcc::eUcs4LE},
    {{0x00, 0x3C, 0x00, 0x3F}, false, vcc::eUtf16LE},
    {{0x3C, 0x00, 0x3F, 0x00}, true, vcc::eUtf16LE},
};

struct CEncodingName {
    const char* name;  // upper case
    vcc::eCodeType code;
};

constexpr CEncodingName kEncodingNames[] = {
    {"SHIFT_JIS", vcc::eShiftJIS}, {"EUC-JP", vcc::eEucJP},     {"ISO-2022-JP", vcc::eIso2022JP},
    {"UTF-8", vcc::eUtf8},         {"MS932", vcc::eWindows932},
};

// The bytes from the file pointer up to and including the first '>'; false when the file
// ends first.
bool ReadThroughFirstGreater(vel::CVelFile& file, CVelStr& out) {
    char block[256];
    for (std::int64_t left = file.GetSize(); left > 0;) {
        const int count = static_cast<int>(left < std::int64_t{sizeof block} ? left : sizeof block);
        if (!file.Read(block, count)) return false;
        left -= count;
        if (const void* greater = std::memchr(block, '>', count)) {
            out.Append(block, static_cast<int>(static_cast<const char*>(greater) - block) + 1);
            return true;
        }
        out.Append(block, count);
    }
    return false;
}

// The value of encoding="..." or encoding='...' (no blanks around "="), upper-cased.
bool FindEncodingName(const CVelStr& declaration, CVelStr& name) {
    const CVelStr key("encoding=");
    const int at = declaration.Pos(key);
    if (at < 0) return false;
    const int open = at + key.GetLength();
    if (open >= declaration.GetLength()) return false;
    const char quote = declaration[open];
    if (quote != '"' && quote != '\'') return false;
    const int close = declaration.Pos(quote, open + 1);
    if (close < 0) return false;
    name = declaration.SubStr(open + 1, close - open - 1);
    name.Upper();
    return true;
}

// A declaration without encoding="..." fails detection on purpose: there is no default.
bool DetectFromDeclaration(vel::CVelFile& file, bool& supported, vcc::eCodeType& code) {
    if (!file.SetFilePointer(0, vel::CVelFile::eSeekBegin) && vel::CVelFile::GetLastError() != 0) {
        return false;
    }
    CVelStr declaration;
    CVelStr name;
    if (!ReadThroughFirstGreater(file, declaration) || !FindEncodingName(declaration, name)) {
        return false;
    }
    supported = false;
    for (const CEncodingName& known : kEncodingNames) {
        if (name == CVelStr(known.name)) {
            supported = true;
            code = known.code;
        }
    }
    return true;
}

bool Detect(const CVelStr& fileName, bool& supported, vcc::eCodeType& code) {
    vel::CVelFile file;
    unsigned char head[4];
    if (!file.CreateFileA(fileName.c_str(), vel::CVelFile::eOpenRead) || !file.Read(head, 2)) {
        return false;
    }
    if (head[0] == 0xFE && head[1] == 0xFF) {
        supported = false;
        return true;
    }
    if (head[0] == 0xFF && head[1] == 0xFE) {
        supported = true;
        code = vcc::eUtf16LE;
        return true;
    }
    if (!file.Read(head + 2, 2)) return false;
    for (const CSignature& signature : kSignatures) {
        if (std::memcmp(head, signature.bytes, 4) == 0) {
            supported = signature.supported;
            if (supported) code = signature.code;
            return true;
        }
    }
    if (std::memcmp(head, "<?xm", 4) != 0) {
        supported = false;
        return true;
    }
    return DetectFromDeclaration(file, supported, code);
}

}  // namespace

bool CParse::CheckCodeType(CVelStr fileName, bool& supported, vcc::eCodeType& code) {
    return RunPublic(__LINE__, "CParse::CheckCodeType",
                     [&] { return Detect(fileName, supported, code); });
}

}  // namespace vx
