#pragma once
// Append-only builder that GetSource of every node writes into.
#include "vx/text/VelStr.h"

namespace velstr {

template <class String>
class CVelStringBuffer {
  public:
    using CharType = typename String::CharType;

    void Append(const String& text) { m_text += text; }
    void Append(CharType ch) { m_text += ch; }
    void Append(const CharType* text, int count) { m_text.Append(text, count); }
    void Reserve(int capacity) { m_text.Reserve(capacity); }
    int GetLength() const noexcept { return m_text.GetLength(); }
    // The finished text; it shares the buffer until the next Append.
    String ToString() const { return m_text; }

  private:
    String m_text;
};

}  // namespace velstr

namespace vx {
using velstr::CVelStringBuffer;
}  // namespace vx
