#pragma once
// Reference-counted strings with copy on write: CVelStrW over 16-bit code units for all text
// inside the library, CVelStr over bytes for file names and encoded buffers (UTF-8 as narrow
// text). Getters everywhere return strings by value; sharing keeps that cheap.
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <new>
#include <type_traits>
#include <utility>

#include "vx/memory/Counts.h"
#include "vx/memory/Pages.h"
#include "vx/platform/Threads.h"

namespace velstr {

// The count is atomic: a string may be shared by a parsing thread's name caches and a document
// that another thread reads or deletes.
class CBaseRefCnt {
  public:
    void AddRef() noexcept { vel::CountUp(m_refCount, 1); }
    // True when the last reference went away. The sole holder skips the decrement: no other
    // thread has a reference it could copy, and most strings are never shared.
    bool Release() noexcept {
        return m_refCount.load(std::memory_order_acquire) == 1 ||
               vel::CountDown(m_refCount, 1) == 1;
    }
    int GetRefCount() const noexcept { return m_refCount.load(std::memory_order_acquire); }

  protected:
    CBaseRefCnt() = default;
    ~CBaseRefCnt() = default;

  private:
    std::atomic<int> m_refCount{1};
};

// The shared representation: one block holding the counts and the units, so that every string
// costs one allocation. Short texts get room for kInlineUnits - 1 units, enough for most names.
template <typename T>
class CVelStrRefCntTC : public CBaseRefCnt {
  public:
    static constexpr int kInlineUnits = 8;

    static CVelStrRefCntTC* Create(int capacity) {
        if (capacity < kInlineUnits - 1) capacity = kInlineUnits - 1;
        void* block = vel::AllocateSmall(BlockSize(capacity), vel::eTextPages);
        return new (block) CVelStrRefCntTC(capacity);
    }
    static void Destroy(CVelStrRefCntTC* rep) noexcept {
        const std::size_t size = BlockSize(rep->m_capacity);
        rep->~CVelStrRefCntTC();
        vel::FreeSmall(rep, size);
    }
    CVelStrRefCntTC(const CVelStrRefCntTC&) = delete;
    CVelStrRefCntTC& operator=(const CVelStrRefCntTC&) = delete;

    T* Data() noexcept { return reinterpret_cast<T*>(this + 1); }

    int m_length = 0;
    int m_capacity;  // units available, not counting the terminator

  private:
    static std::size_t BlockSize(int capacity) {
        return sizeof(CVelStrRefCntTC) + (static_cast<std::size_t>(capacity) + 1) * sizeof(T);
    }
    explicit CVelStrRefCntTC(int capacity) : m_capacity(capacity) { Data()[0] = T(); }
    ~CVelStrRefCntTC() = default;
};

// Thrown by misuse of a string operation; what() names the operation.
void ThrowStringError(const char* what);

// Index of the first unit of text[from, length) that is a, b or c, or length when there is
// none. Searching text is the innermost loop of parsing, so this one runs on vector registers.
int FindUnit(const char16_t* text, int from, int length, char16_t a, char16_t b,
             char16_t c) noexcept;

namespace detail {

inline std::uint64_t Load64(const unsigned char* bytes) noexcept {
    std::uint64_t value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

inline std::uint64_t Load32(const unsigned char* bytes) noexcept {
    std::uint32_t value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

// The two halves of the 128-bit product folded together: every bit of either factor reaches
// the low bits, which tables index by.
inline std::uint64_t Fold(std::uint64_t a, std::uint64_t b) noexcept {
    __extension__ using Wide = unsigned __int128;  // hosts may build with -Wpedantic
    const Wide product = static_cast<Wide>(a) * b;
    return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

}  // namespace detail

// A hash of units[0, length), inline: names and short texts are hashed per use, and for them a
// library call costs more than the work. Sixteen bytes go into each multiply; the last word is
// read overlapping the one before it, so nothing past the text is read.
template <typename T>
std::size_t HashUnits(const T* units, int length) noexcept {
    constexpr std::uint64_t kMix0 = 0xa0761d6478bd642fULL;
    constexpr std::uint64_t kMix1 = 0xe7037ed1a0b428dbULL;
    const auto* bytes = reinterpret_cast<const unsigned char*>(units);
    const std::size_t size = static_cast<std::size_t>(length) * sizeof(T);
    std::uint64_t seed = kMix0 ^ size;
    std::uint64_t first = 0;
    std::uint64_t last = 0;
    if (size > 16) {
        std::size_t left = size;
        for (; left > 16; left -= 16, bytes += 16)
            seed = detail::Fold(detail::Load64(bytes) ^ kMix1, detail::Load64(bytes + 8) ^ seed);
        first = detail::Load64(bytes + left - 16);
        last = detail::Load64(bytes + left - 8);
    } else if (size >= 8) {
        first = detail::Load64(bytes);
        last = detail::Load64(bytes + size - 8);
    } else if (size >= 4) {
        first = detail::Load32(bytes);
        last = detail::Load32(bytes + size - 4);
    } else if (size > 0) {
        first = (std::uint64_t{bytes[0]} << 16) | (std::uint64_t{bytes[size / 2]} << 8) |
                bytes[size - 1];
    }
    return static_cast<std::size_t>(detail::Fold(first ^ kMix1, last ^ seed));
}

// Whether a[0, length) and b[0, length) hold the same units. Names and short texts compare by
// words inline, overlapping at the end; longer texts by memcmp.
template <typename T>
bool SameUnits(const T* a, const T* b, int length) noexcept {
    const auto* x = reinterpret_cast<const unsigned char*>(a);
    const auto* y = reinterpret_cast<const unsigned char*>(b);
    const std::size_t size = static_cast<std::size_t>(length) * sizeof(T);
    if (size > 64) return std::memcmp(x, y, size) == 0;
    if (size >= 8) {
        for (std::size_t i = 0; i + 8 < size; i += 8) {
            if (detail::Load64(x + i) != detail::Load64(y + i)) return false;
        }
        return detail::Load64(x + size - 8) == detail::Load64(y + size - 8);
    }
    if (size >= 4) {
        return detail::Load32(x) == detail::Load32(y) &&
               detail::Load32(x + size - 4) == detail::Load32(y + size - 4);
    }
    for (std::size_t i = 0; i < size; ++i) {
        if (x[i] != y[i]) return false;
    }
    return true;
}

template <typename T, typename Derived>
class CVelStrBase {
  public:
    using CharType = T;
    static constexpr int npos = -1;

    CVelStrBase() noexcept = default;
    CVelStrBase(T ch) { Assign(&ch, 1); }  // NOLINT: a single unit converts implicitly
    CVelStrBase(const T* text) { Assign(text, text ? TextLength(text) : 0); }
    CVelStrBase(const T* text, int length) { Assign(text, length); }
    CVelStrBase(const CVelStrBase& other) noexcept : m_rep(other.m_rep) {
        if (m_rep) m_rep->AddRef();
    }
    CVelStrBase(CVelStrBase&& other) noexcept : m_rep(std::exchange(other.m_rep, nullptr)) {}
    ~CVelStrBase() { ReleaseRep(); }

    CVelStrBase& operator=(const CVelStrBase& other) noexcept {
        if (other.m_rep) other.m_rep->AddRef();
        ReleaseRep();
        m_rep = other.m_rep;
        return *this;
    }
    CVelStrBase& operator=(CVelStrBase&& other) noexcept {
        if (this != &other) {
            ReleaseRep();
            m_rep = std::exchange(other.m_rep, nullptr);
        }
        return *this;
    }

    int GetLength() const noexcept { return m_rep ? m_rep->m_length : 0; }
    bool IsEmpty() const noexcept { return GetLength() == 0; }
    // Never null; always terminated.
    const T* c_str() const noexcept { return m_rep ? m_rep->Data() : EmptyText(); }
    // Unchecked, like std::string: callers index inside the text; index GetLength() reads the
    // terminator, also of an empty string.
    T operator[](int index) const noexcept { return c_str()[index]; }

    void SetAt(int index, T ch) {
        MakePrivate(GetLength());
        m_rep->Data()[index] = ch;
    }

    Derived& operator+=(const CVelStrBase& other) {
        Append(other.c_str(), other.GetLength());
        return Self();
    }
    Derived& operator+=(T ch) {
        Append(&ch, 1);
        return Self();
    }
    Derived& operator+=(const T* text) {
        Append(text, TextLength(text));
        return Self();
    }
    // text may point into this string's own buffer. A text longer than the largest int
    // throws std::length_error.
    void Append(const T* text, int count);

    // Index of the first occurrence of sub at or after from, or npos. An empty sub is found at
    // from when from is inside the text.
    int Pos(const CVelStrBase& sub, int from = 0) const noexcept;
    int Pos(T ch, int from = 0) const noexcept;

    // True when the text holds keyword's units starting at index; a keyword running past the
    // end does not match.
    bool MatchAt(int index, const CVelStrBase& keyword) const noexcept {
        const int n = keyword.GetLength();
        if (index < 0 || index > GetLength() - n) return false;
        // Keywords are short and most tries fail at their first unit: a loop beats a call.
        const T* here = c_str() + index;
        const T* units = keyword.c_str();
        for (int i = 0; i < n; ++i) {
            if (here[i] != units[i]) return false;
        }
        return true;
    }

    // Compare at most count units, as strncmp does: the end of a string reads as a terminator.
    int Strncmp(const CVelStrBase& other, int count) const noexcept {
        return Compare(other, count, false);
    }
    // The same, folding ASCII letters only, whatever the locale.
    int Strnicmp(const CVelStrBase& other, int count) const noexcept {
        return Compare(other, count, true);
    }

    // count units from first; both are clamped to the text.
    Derived SubStr(int first, int count = npos) const;
    // This string, or a copy of it when its units live on a parse's pages: what a
    // process-wide store keeps must not hold a page alive.
    Derived OffPages() const {
        if (!m_rep || !vel::IsPaged(m_rep)) return static_cast<const Derived&>(*this);
        vel::CHeapScope heap;
        return Derived(c_str(), GetLength());
    }

    // Upper-cases ASCII letters in place.
    Derived& Upper();

    // Grows the buffer so that length units fit without another allocation.
    void Reserve(int capacity) { MakePrivate(capacity > GetLength() ? capacity : GetLength()); }
    // A private buffer of exactly length units (contents unspecified beyond the old text) for
    // filling in place; the text's length becomes length.
    T* GetBuffer(int length);
    // Cuts the text to length units (no-op when already shorter).
    void Truncate(int length);
    void Clear() {
        ReleaseRep();
        m_rep = nullptr;
    }

    std::size_t Hash() const noexcept;

    friend bool operator==(const Derived& a, const Derived& b) noexcept { return Equal(a, b); }
    friend bool operator!=(const Derived& a, const Derived& b) noexcept { return !Equal(a, b); }
    // By code unit.
    friend bool operator<(const Derived& a, const Derived& b) noexcept { return Less(a, b); }

  protected:
    using Rep = CVelStrRefCntTC<T>;

    Derived& Self() noexcept { return static_cast<Derived&>(*this); }
    static int TextLength(const T* text) noexcept {
        int n = 0;
        while (text[n] != T())
            ++n;
        return n;
    }
    static const T* EmptyText() noexcept {
        static const T empty[1] = {T()};
        return empty;
    }
    static bool Equal(const CVelStrBase& a, const CVelStrBase& b) noexcept {
        return a.m_rep == b.m_rep ||
               (a.GetLength() == b.GetLength() && SameUnits(a.c_str(), b.c_str(), a.GetLength()));
    }
    static bool Less(const CVelStrBase& a, const CVelStrBase& b) noexcept;

    void Assign(const T* text, int length);
    // Makes the representation unshared with room for capacity units, keeping the text.
    void MakePrivate(int capacity);
    void ReleaseRep() noexcept {
        if (m_rep && m_rep->Release()) DeleteRep(m_rep);
    }
    // Out of line: inlined, g++ 12 takes the shared count of two handles for a use after free.
    [[gnu::noinline]] static void DeleteRep(Rep* rep) noexcept { Rep::Destroy(rep); }
    int Compare(const CVelStrBase& other, int count, bool foldCase) const noexcept;

    Rep* m_rep = nullptr;  // null is the empty string
};

class CVelStr;

// Wide text: one char16_t per character, no surrogate handling.
class CVelStrW : public CVelStrBase<char16_t, CVelStrW> {
  public:
    using CVelStrBase::CVelStrBase;
    CVelStrW() noexcept = default;
    // Decodes UTF-8; an invalid byte becomes U+FFFD and is logged.
    explicit CVelStrW(const CVelStr& narrow);

    // Builds from a format: %s takes const char16_t*, %d an int, %ld a long, %u, %x, %c (a
    // char16_t passed as int) and %% as in printf; a width such as %08x is honoured.
    CVelStrW& Format(const char16_t* format, ...);

    // Rewrites every line end (CR LF, lone CR, lone LF) as lineEnd, which must be CR, LF or
    // CR LF; anything else is logged and throws, leaving the text unchanged. A text that has
    // nothing to convert keeps its shared buffer. With the other line-end steps in LineEnds.cpp.
    void ConvRetCode(const CVelStrW& lineEnd);
};

// Narrow text: bytes, UTF-8 where it is text.
class CVelStr : public CVelStrBase<char, CVelStr> {
  public:
    using CVelStrBase::CVelStrBase;
    CVelStr() noexcept = default;
    // Encodes UTF-8; a surrogate pair becomes one four-byte sequence, a lone surrogate U+FFFD.
    explicit CVelStr(const CVelStrW& wide);
    // Characters first to last inclusive; a negative first counts as 0, a negative last means
    // the end, a last beyond the end is cut to it.
    CVelStr(const CVelStr& other, int first, int last);

    CVelStr& Format(const char* format, ...) __attribute__((format(printf, 2, 3)));
    // Replaces the text with the whole content of a file; false when it cannot be read.
    bool LoadFromFile(const char* fileName);
};

// ---- template members ----

template <typename T, typename D>
void CVelStrBase<T, D>::Assign(const T* text, int length) {
    if (length <= 0) return;
    m_rep = Rep::Create(length);
    std::memcpy(m_rep->Data(), text, length * sizeof(T));
    m_rep->m_length = length;
    m_rep->Data()[length] = T();
}

template <typename T, typename D>
void CVelStrBase<T, D>::MakePrivate(int capacity) {
    if (m_rep && m_rep->GetRefCount() == 1 && capacity <= m_rep->m_capacity) return;
    // GetBuffer may ask for less room than the current text holds.
    const int length = GetLength() < capacity ? GetLength() : capacity;
    Rep* fresh = Rep::Create(capacity);
    if (length) std::memcpy(fresh->Data(), m_rep->Data(), length * sizeof(T));
    fresh->m_length = length;
    fresh->Data()[length] = T();
    ReleaseRep();
    m_rep = fresh;
}

template <typename T, typename D>
void CVelStrBase<T, D>::Append(const T* text, int count) {
    if (count <= 0) return;
    const int length = GetLength();
    const int total = vel::CheckedCount(std::int64_t{length} + count);
    const bool owned = m_rep && m_rep->GetRefCount() == 1;
    Rep* target = m_rep;
    if (!owned || total > m_rep->m_capacity) {
        // Amortised growth for a string that is being built.
        const int capacity = owned ? vel::CappedCount(std::int64_t{total} + total / 2) : total;
        target = Rep::Create(capacity);
        if (length) std::memcpy(target->Data(), m_rep->Data(), length * sizeof(T));
    }
    // The old buffer is released only after the copy, as text may point into it.
    std::memmove(target->Data() + length, text, count * sizeof(T));
    target->m_length = total;
    target->Data()[total] = T();
    if (target != m_rep) {
        ReleaseRep();
        m_rep = target;
    }
}

template <typename T, typename D>
T* CVelStrBase<T, D>::GetBuffer(int length) {
    if (length <= 0) {
        Clear();
        return const_cast<T*>(EmptyText());
    }
    MakePrivate(length);
    m_rep->m_length = length;
    m_rep->Data()[length] = T();
    return m_rep->Data();
}

template <typename T, typename D>
void CVelStrBase<T, D>::Truncate(int length) {
    if (length >= GetLength()) return;
    if (length <= 0) {
        Clear();
        return;
    }
    MakePrivate(GetLength());
    m_rep->m_length = length;
    m_rep->Data()[length] = T();
}

template <typename T, typename D>
int CVelStrBase<T, D>::Pos(const CVelStrBase& sub, int from) const noexcept {
    const int n = sub.GetLength();
    const int last = GetLength() - n;
    if (from < 0) from = 0;
    if (n == 0) return from < GetLength() ? from : npos;
    const T* text = c_str();
    for (int i = Pos(sub[0], from); i >= 0 && i <= last; i = Pos(sub[0], i + 1)) {
        if (std::memcmp(text + i, sub.c_str(), n * sizeof(T)) == 0) return i;
    }
    return npos;
}

template <typename T, typename D>
int CVelStrBase<T, D>::Pos(T ch, int from) const noexcept {
    const T* text = c_str();
    const int length = GetLength();
    if (from < 0) from = 0;
    if (from >= length) return npos;
    int found;
    if constexpr (sizeof(T) == sizeof(char16_t)) {
        found = FindUnit(text, from, length, ch, ch, ch);
    } else {
        const void* hit = std::memchr(text + from, ch, length - from);
        found = hit ? static_cast<int>(static_cast<const T*>(hit) - text) : length;
    }
    return found < length ? found : npos;
}

template <typename T, typename D>
int CVelStrBase<T, D>::Compare(const CVelStrBase& other, int count, bool foldCase) const noexcept {
    auto fold = [foldCase](T ch) -> T {
        return (foldCase && ch >= T('a') && ch <= T('z')) ? T(ch - T('a') + T('A')) : ch;
    };
    for (int i = 0; i < count; ++i) {
        const T a = i < GetLength() ? fold((*this)[i]) : T();
        const T b = i < other.GetLength() ? fold(other[i]) : T();
        if (a != b)
            return static_cast<std::make_unsigned_t<T>>(a) < static_cast<std::make_unsigned_t<T>>(b)
                       ? -1
                       : 1;
        if (a == T()) return 0;
    }
    return 0;
}

template <typename T, typename D>
D CVelStrBase<T, D>::SubStr(int first, int count) const {
    const int length = GetLength();
    if (first < 0) first = 0;
    if (first >= length) return D();
    if (count < 0 || count > length - first) count = length - first;
    if (first == 0 && count == length) return static_cast<const D&>(*this);
    return D(c_str() + first, count);
}

template <typename T, typename D>
D& CVelStrBase<T, D>::Upper() {
    for (int i = 0; i < GetLength(); ++i) {
        const T ch = (*this)[i];
        if (ch >= T('a') && ch <= T('z')) SetAt(i, T(ch - T('a') + T('A')));
    }
    return Self();
}

template <typename T, typename D>
std::size_t CVelStrBase<T, D>::Hash() const noexcept {
    return HashUnits(c_str(), GetLength());
}

template <typename T, typename D>
bool CVelStrBase<T, D>::Less(const CVelStrBase& a, const CVelStrBase& b) noexcept {
    const int n = a.GetLength() < b.GetLength() ? a.GetLength() : b.GetLength();
    for (int i = 0; i < n; ++i) {
        const auto x = static_cast<std::make_unsigned_t<T>>(a[i]);
        const auto y = static_cast<std::make_unsigned_t<T>>(b[i]);
        if (x != y) return x < y;
    }
    return a.GetLength() < b.GetLength();
}

}  // namespace velstr

namespace vx {
using velstr::CVelStr;
using velstr::CVelStrW;
using velstr::FindUnit;
}  // namespace vx

template <>
struct std::hash<velstr::CVelStrW> {
    std::size_t operator()(const velstr::CVelStrW& s) const noexcept { return s.Hash(); }
};
