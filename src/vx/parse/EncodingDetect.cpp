// Which encoding a file is in, from its first bytes and its declaration's encoding="...", and
// the file's text decoded accordingly.
#include <algorithm>
#include <cstdint>
#include <cstring>

#include "vx/parse/Parse.h"
#include "vx/platform/File.h"
#include "vx/text/Decode.h"

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
bool DetectFromDeclaration(const CVelStr& declaration, bool& supported, vcc::eCodeType& code) {
    CVelStr name;
    if (!FindEncodingName(declaration, name)) return false;
    supported = false;
    for (const CEncodingName& known : kEncodingNames) {
        if (name == CVelStr(known.name)) {
            supported = true;
            code = known.code;
        }
    }
    return true;
}

// The decision from the file's first `size` (at most 4) bytes; for "<?xm", readDeclaration
// gives the bytes through the first '>', or false when the file ends first.
template <typename ReadDeclaration>
bool DetectFromHead(const unsigned char* head, int size, ReadDeclaration&& readDeclaration,
                    bool& supported, vcc::eCodeType& code) {
    if (size < 2) return false;
    if (head[0] == 0xFE && head[1] == 0xFF) {
        supported = false;
        return true;
    }
    if (head[0] == 0xFF && head[1] == 0xFE) {
        supported = true;
        code = vcc::eUtf16LE;
        return true;
    }
    if (size < 4) return false;
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
    CVelStr declaration;
    return readDeclaration(declaration) && DetectFromDeclaration(declaration, supported, code);
}

bool DetectInFile(const CVelStr& fileName, bool& supported, vcc::eCodeType& code) {
    vel::CVelFile file;
    unsigned char head[4];
    if (!file.CreateFileA(fileName.c_str(), vel::CVelFile::eOpenRead)) return false;
    const int size = !file.Read(head, 2) ? 0 : !file.Read(head + 2, 2) ? 2 : 4;
    const auto readDeclaration = [&file](CVelStr& declaration) {
        if (!file.SetFilePointer(0, vel::CVelFile::eSeekBegin) &&
            vel::CVelFile::GetLastError() != 0) {
            return false;
        }
        return ReadThroughFirstGreater(file, declaration);
    };
    return DetectFromHead(head, size, readDeclaration, supported, code);
}

bool DetectInBytes(const CVelStr& bytes, bool& supported, vcc::eCodeType& code) {
    const auto readDeclaration = [&bytes](CVelStr& declaration) {
        const int greater = bytes.Pos('>');
        if (greater < 0) return false;
        declaration = bytes.SubStr(0, greater + 1);
        return true;
    };
    return DetectFromHead(reinterpret_cast<const unsigned char*>(bytes.c_str()),
                          std::min(bytes.GetLength(), 4), readDeclaration, supported, code);
}

// The file's bytes and their encoding, or the code of the step that failed, each step (open,
// detect, load) taken on its own.
CParseError::eError LoadStepByStep(const CVelStr& fileName, CVelStr& bytes, vcc::eCodeType& code) {
    if (!vel::CVelFile().CreateFileA(fileName.c_str(), vel::CVelFile::eOpenRead)) {
        return CParseError::eErrFileOpen;
    }
    bool supported = false;
    if (!CParse::CheckCodeType(fileName, supported, code) || !supported) {
        return CParseError::eErrCodeTypeDetect;
    }
    // Readable a moment ago: a failure now is reported like one to open.
    return bytes.LoadFromFile(fileName.c_str()) ? CParseError::eErrNone : CParseError::eErrFileOpen;
}

// The same from one read of the file; only when that fails are the steps taken one by one.
CParseError::eError LoadAtOnce(const CVelStr& fileName, CVelStr& bytes, vcc::eCodeType& code) {
    if (!bytes.LoadFromFile(fileName.c_str())) return LoadStepByStep(fileName, bytes, code);
    bool supported = false;
    return DetectInBytes(bytes, supported, code) && supported ? CParseError::eErrNone
                                                              : CParseError::eErrCodeTypeDetect;
}

}  // namespace

bool CParse::CheckCodeType(CVelStr fileName, bool& supported, vcc::eCodeType& code) {
    return RunPublic(__LINE__, "CParse::CheckCodeType",
                     [&] { return DetectInFile(fileName, supported, code); });
}

CParseError::eError CParse::LoadWideText(const CVelStr& fileName, CVelStrW& text) {
    CVelStr bytes;
    vcc::eCodeType code = vcc::eUtf16LE;
    // A log shows CheckCodeType's own scope, so while one is open the steps run one by one.
    const CParseError::eError failure =
        vel::MayLog() ? LoadStepByStep(fileName, bytes, code) : LoadAtOnce(fileName, bytes, code);
    if (failure != CParseError::eErrNone) return failure;
    switch (DecodeToWide(bytes.c_str(), bytes.GetLength(), code, text)) {
        case eDecodeResult::eDecoded:
            return CParseError::eErrNone;
        case eDecodeResult::eTooLarge:
            return CParseError::eErrNoMemory;
        case eDecodeResult::eNotConvertible:
            break;
    }
    return CParseError::eErrCodeConvert;
}

}  // namespace vx
