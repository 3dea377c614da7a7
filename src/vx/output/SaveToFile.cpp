// Saving a document in the encoding its declaration names.
#include <algorithm>
#include <cstdint>
#include <vector>

#include "vx/dom/XmlDocument.h"
#include "vx/memory/Counts.h"
#include "vx/output/SaveEncodings.h"
#include "vx/platform/CodeConv.h"
#include "vx/platform/File.h"

namespace vx {

const SSaveEncoding* FindSaveEncoding(const CVelStrW& encoding) {
    for (const SSaveEncoding& entry : kSaveEncodings) {
        const CVelStrW name(entry.name);
        if (encoding.Strnicmp(name, name.GetLength()) == 0) return &entry;
    }
    return nullptr;
}

bool CXmlDocument::SaveToFile(const CVelStr& fileName) const {
    const int unitSize = vcc::GetTermCharSize(vcc::eUtf16LE);
    CVelStringBuffer<CVelStrW> source;
    GetSource(source);
    const CVelStrW text = source.ToString();

    const SSaveEncoding* encoding = FindSaveEncoding(m_encoding);
    if (!encoding) return false;
    const vcc::eCodeType target = encoding->code;
    const std::int64_t sourceBytes = std::int64_t{text.GetLength()} * unitSize;
    if (sourceBytes > vel::kMaxCount) return false;  // more than the conversion can take
    int size = 0;
    if (!vcc::GetBufSizeByByte(&size, static_cast<int>(sourceBytes), vcc::eUtf16LE, target)) {
        return false;
    }
    std::vector<char> bytes(static_cast<std::size_t>(size) + 1, '\0');
    if (!vcc::ConvertTo(reinterpret_cast<const char*>(text.c_str()), static_cast<int>(sourceBytes),
                        vcc::eUtf16LE, bytes.data(), &size, target)) {
        return false;
    }
    // Everything from the first zero byte goes, for every encoding, the UCS forms included.
    const auto end = std::find(bytes.begin(), bytes.begin() + size, '\0');
    // A failed or interrupted save leaves the old file as it was.
    return vel::ReplaceFileContents(fileName.c_str(), bytes.data(),
                                    static_cast<int>(end - bytes.begin()));
}

}  // namespace vx
