#pragma once
// The encodings CXmlDocument::SaveToFile writes, for hosts that offer them by name.
#include "vx/platform/CodeConv.h"
#include "vx/text/VelStr.h"

namespace vx {

struct SSaveEncoding {
    const char16_t* name;
    vcc::eCodeType code;
};

// In the order a document's encoding is matched against them.
inline constexpr SSaveEncoding kSaveEncodings[] = {
    {u"Shift_jis", vcc::eShiftJIS},     {u"EUC-JP", vcc::eEucJP},
    {u"ISO-2022-JP", vcc::eIso2022JP},  {u"ISO-10646-UCS-2", vcc::eUtf16LE},
    {u"ISO-10646-UCS-4", vcc::eUcs4LE},
};

// The entry SaveToFile uses for a document whose encoding is `encoding`: case is ignored and
// the encoding need only begin with the name. Null when it saves none (UTF-8 among them).
const SSaveEncoding* FindSaveEncoding(const CVelStrW& encoding);

}  // namespace vx
