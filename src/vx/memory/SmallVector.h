#pragma once
// A growable array held through one pointer to a block that carries the count, the capacity
// and the elements. An empty vector has no block at all.
#include <cstddef>
#include <new>
#include <stdexcept>
#include <utility>

#include "vx/memory/Counts.h"
#include "vx/memory/Pages.h"

namespace vel {

template <typename T>
class CSmallVector {
  public:
    CSmallVector() noexcept = default;
    CSmallVector(const CSmallVector& other) {
        Reserve(other.GetSize());
        for (const T& item : other)
            PushBack(item);
    }
    CSmallVector(CSmallVector&& other) noexcept : m_block(std::exchange(other.m_block, nullptr)) {}
    ~CSmallVector() { Free(); }

    CSmallVector& operator=(const CSmallVector& other) {
        if (this != &other) {
            CSmallVector copy(other);
            Swap(copy);
        }
        return *this;
    }
    CSmallVector& operator=(CSmallVector&& other) noexcept {
        if (this != &other) {
            Free();
            m_block = std::exchange(other.m_block, nullptr);
        }
        return *this;
    }

    int GetSize() const noexcept { return m_block ? m_block->count : 0; }
    bool IsEmpty() const noexcept { return GetSize() == 0; }

    // Bounds-checked, as every access of this vector is.
    T& operator[](int index) { return Data()[Checked(index)]; }
    const T& operator[](int index) const { return Data()[Checked(index)]; }
    T& Back() { return (*this)[GetSize() - 1]; }
    const T& Back() const { return (*this)[GetSize() - 1]; }

    T* begin() noexcept { return Data(); }
    T* end() noexcept { return Data() + GetSize(); }
    const T* begin() const noexcept { return Data(); }
    const T* end() const noexcept { return Data() + GetSize(); }

    void PushBack(const T& value) { Emplace(value); }
    void PushBack(T&& value) { Emplace(std::move(value)); }

    // pos may equal the count (append).
    void Insert(int pos, T value) {
        if (pos < 0 || pos > GetSize()) throw std::out_of_range("CSmallVector out of range");
        Emplace(std::move(value));
        T* data = Data();
        for (int i = GetSize() - 1; i > pos; --i)
            std::swap(data[i], data[i - 1]);
    }

    void Erase(int pos) {
        if (pos < 0 || pos >= GetSize()) throw std::out_of_range("CSmallVector out of range");
        T* data = Data();
        for (int i = pos; i + 1 < GetSize(); ++i)
            data[i] = std::move(data[i + 1]);
        data[GetSize() - 1].~T();
        --m_block->count;
    }

    void Clear() noexcept {
        if (!m_block) return;
        T* data = Data();
        for (int i = 0; i < m_block->count; ++i)
            data[i].~T();
        m_block->count = 0;
    }

    void Reserve(int capacity) {
        if (capacity > Capacity()) Grow(capacity);
    }

    void Swap(CSmallVector& other) noexcept { std::swap(m_block, other.m_block); }

  private:
    struct Block {
        int count;
        int capacity;
    };
    static constexpr std::size_t kHeader =
        (sizeof(Block) + alignof(T) - 1) / alignof(T) * alignof(T);

    T* Data() const noexcept {
        return m_block
                   ? std::launder(reinterpret_cast<T*>(reinterpret_cast<char*>(m_block) + kHeader))
                   : nullptr;
    }
    static std::size_t BlockSize(int capacity) {
        return kHeader + sizeof(T) * static_cast<std::size_t>(capacity);
    }
    int Capacity() const noexcept { return m_block ? m_block->capacity : 0; }
    int Checked(int index) const {
        if (index < 0 || index >= GetSize()) throw std::out_of_range("CSmallVector out_of_range");
        return index;
    }

    template <typename U>
    void Emplace(U&& value) {
        if (GetSize() == Capacity()) {
            CheckedCount(std::int64_t{GetSize()} + 1);
            // value may live in this vector: build it before the old block goes.
            T item(std::forward<U>(value));
            Grow(Capacity() < 4 ? 4 : CappedCount(std::int64_t{Capacity()} * 2));
            new (Data() + m_block->count) T(std::move(item));
        } else {
            new (Data() + m_block->count) T(std::forward<U>(value));
        }
        ++m_block->count;
    }

    void Grow(int capacity) {
        void* memory = AllocateSmall(BlockSize(capacity));
        auto* block = static_cast<Block*>(memory);
        block->count = 0;
        block->capacity = capacity;
        T* fresh = std::launder(reinterpret_cast<T*>(static_cast<char*>(memory) + kHeader));
        const int count = GetSize();
        T* old = Data();
        for (int i = 0; i < count; ++i) {
            new (fresh + i) T(std::move(old[i]));
            old[i].~T();
        }
        block->count = count;
        if (m_block) FreeSmall(m_block, BlockSize(m_block->capacity));
        m_block = block;
    }

    void Free() noexcept {
        if (!m_block) return;
        Clear();
        FreeSmall(m_block, BlockSize(m_block->capacity));
        m_block = nullptr;
    }

    Block* m_block = nullptr;
};

}  // namespace vel

namespace vx {
using vel::CSmallVector;
}  // namespace vx
