// Texts that many records have in common, as the name of a game: in memory once, whoever uses them.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <new>
#include <ostream>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

// A text that never changes, as large as a pointer. A copy shares its characters, on any thread; assigning
// replaces the whole text.
class SharedText {
    // For other kinds of text.
    template <typename Text>
    using AsText = std::enable_if_t<std::is_convertible_v<const Text&, std::string_view> &&
                                    !std::is_same_v<Text, SharedText>>;

  public:
    SharedText() = default;
    SharedText(std::string_view text) : block_(text.empty() ? nullptr : Make(text)) {}
    SharedText(const std::string& text) : SharedText(std::string_view(text)) {}
    SharedText(const char* text) : SharedText(std::string_view(text)) {}
    SharedText(const SharedText& other) noexcept : block_(other.block_) {
        if (block_) block_->uses.fetch_add(1, std::memory_order_relaxed);
    }
    SharedText(SharedText&& other) noexcept : block_(std::exchange(other.block_, nullptr)) {}
    SharedText& operator=(SharedText other) noexcept {
        std::swap(block_, other.block_);
        return *this;
    }
    ~SharedText() {
        if (block_ && block_->uses.fetch_sub(1, std::memory_order_acq_rel) == 1) ::operator delete(block_);
    }

    std::string_view view() const {
        return block_ ? std::string_view(reinterpret_cast<const char*>(block_ + 1), block_->size)
                      : std::string_view();
    }
    bool empty() const { return !block_; }
    operator std::string_view() const { return view(); }
    operator std::string() const { return std::string(view()); }

    friend bool operator==(const SharedText& a, const SharedText& b) {
        return a.block_ == b.block_ || a.view() == b.view();
    }
    template <typename Text, typename = AsText<Text>>
    friend bool operator==(const SharedText& a, const Text& b) {
        return a.view() == std::string_view(b);
    }
    template <typename Text, typename = AsText<Text>>
    friend bool operator!=(const SharedText& a, const Text& b) {
        return !(a == b);
    }
    friend bool operator!=(const SharedText& a, const SharedText& b) { return !(a == b); }
    friend std::ostream& operator<<(std::ostream& out, const SharedText& text) { return out << text.view(); }

  private:
    // The characters follow it.
    struct Block {
        std::atomic<uint32_t> uses;
        uint32_t size;
    };

    static Block* Make(std::string_view text) {
        auto* const block =
            new (::operator new(sizeof(Block) + text.size())) Block{{1}, static_cast<uint32_t>(text.size())};
        std::memcpy(static_cast<void*>(block + 1), text.data(), text.size());
        return block;
    }

    Block* block_ = nullptr;
};

// Finds most texts that were shared before again, with little memory of its own. One thread.
class TextPool {
  public:
    SharedText Share(std::string_view text) {
        SharedText& slot = slots_[std::hash<std::string_view>{}(text) % kSlots];
        if (slot.view() != text) slot = SharedText(text);
        return slot;
    }
    void Share(SharedText& text) { text = Share(text.view()); }

  private:
    static constexpr size_t kSlots = 4096;
    std::array<SharedText, kSlots> slots_;
};
