#pragma once
// Helpers shared by the document-model tests.
#include <gtest/gtest.h>

#include <string>

#include "platform/PlatformTestUtil.h"
#include "vx/dom/XmlBaseObject.h"

namespace vxtest {

using platform_test::LogCapture;
using platform_test::ReadFile;
using platform_test::TempDir;
using platform_test::ThrownText;

inline std::string Utf8(const vx::CVelStrW& text) {
    return vx::CVelStr(text).c_str();
}

// The node's XML text, as UTF-8 for readable failures.
inline std::string Source(const vx::CXmlBaseObject& node) {
    vx::CVelStringBuffer<vx::CVelStrW> out;
    node.GetSource(out);
    return Utf8(out.ToString());
}

}  // namespace vxtest
