// Saving a document in the encoding its declaration names.
#include <algorithm>
#include <vector>

#include "vx/dom/XmlDocument.h"
#include "vx/platform/CodeConv.h"
#include "vx/platform/File.h"

namespace vx {

namespace {

// The encoding named by a declaration value. Case is ignored and the value need only begin
// with the name. UTF-8 and everything else is not saved.
bool FindOutputCode(const CVelStrW& encoding, vcc::eCodeType* code) {
    static constexpr struct {
        const char16_t* name;
        vcc::eCodeType code;
    } kNames[] = {
        {u"Shift_jis", vcc::eShiftJIS},     {u"EUC-JP", vcc::eEucJP},
        {u"ISO-2022-JP", vcc::eIso2022JP},  {u"ISO-10646-UCS-2", vcc::eUtf16LE},
        {u"ISO-10646-UCS-4", vcc::eUcs4LE},
    };
    for (const auto& entry : kNames) {
        const CVelStrW name(entry.name);
        if (encoding.Strnicmp(name, name.GetLength()) == 0) {
            *code = entry.code;
            return true;
        }
    }
    return false;
}

}  // namespace

bool CXmlDocument::SaveToFile(const CVelStr& fileName) const {
    const int unitSize = vcc::GetTermCharSize(vcc::eUtf16LE);
    CVelStringBuffer<CVelStrW> source;
    GetSource(source);
    const CVelStrW text = source.ToString();

    vcc::eCodeType target;
    if (!FindOutputCode(m_encoding, &target)) return false;
    const int sourceBytes = text.GetLength() * unitSize;
    int size = 0;
    if (!vcc::GetBufSizeByByte(&size, sourceBytes, vcc::eUtf16LE, target)) return false;
    std::vector<char> bytes(static_cast<std::size_t>(size) + 1, '\0');
    if (!vcc::ConvertTo(reinterpret_cast<const char*>(text.c_str()), sourceBytes, vcc::eUtf16LE,
                        bytes.data(), &size, target)) {
        return false;
    }
    // Everything from the first zero byte goes, for every encoding, the UCS forms included.
    const auto end = std::find(bytes.begin(), bytes.begin() + size, '\0');
    // A failed or interrupted save leaves the old file as it was.
    return vel::ReplaceFileContents(fileName.c_str(), bytes.data(),
                                    static_cast<int>(end - bytes.begin()));
}

}  // namespace vx
