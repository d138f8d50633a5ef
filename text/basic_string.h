// stdx::basic_string: a value-semantics string of units C with a small in-place
// form and a heap form shared between copies through an atomic reference count.
// See text/string.h for the module contract and the member list other modules
// may rely on.
//
// Layout and rules (observable through size(), capacity() and use_count()):
// - One 32-bit mode word, then 24 bytes of room (12 UTF-16 units or 24 bytes).
// - In-place form: the mode word holds the length, which is below the room
//   (at most 11 UTF-16 units or 23 bytes); the units follow, then a zero unit.
//   A string is in this form exactly when its length allows it.
// - Heap form: the mode word holds the room's size in units (12 or 24); the room
//   holds the block, the end of the text and the block's text capacity. The
//   block starts with a 64-bit atomic reference count, then the units and a
//   zero unit.
// - Copies share the block. Every change first gives the string a block of its
//   own when the count is not 1, so no change is ever seen through a copy.
// - Block room counts the reference count as units (4 UTF-16 units, 8 bytes).
//   Needed room is new length + those units. A block that is too small is
//   replaced by one of the needed room or, for appends (append, push_back, +=),
//   by one of the larger of the needed room and 1.5 times the current room.
// - Room in bytes is rounded up: below 257 to a multiple of 8, below 513 to 16,
//   below 1,024 to 32, below 2,048 to 64, below 4,096 to 128, below 8,192 to
//   256, below 16,384 to 512, and not at all from 16,384 on.
// - The terminator's unit lies beyond the room, so a text that fills the room
//   exactly is still terminated.
// - Lengths of 0x7FFFFFFFFFFFFFFF units or more throw
//   std::length_error("basic_string"); positions past the end given to substr,
//   erase or insert throw std::out_of_range("basic_string"). A block too large
//   for the address space throws std::bad_alloc.
//
// Threading: one string object is used by one thread at a time; copies of it
// may live, change and die on other threads at the same time.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <new>
#include <stdexcept>
#include <utility>

#include "text/fix_char_traits.h"

namespace stdx {

template <class C, class Traits = fix_char_traits<C>>
class basic_string {
  public:
    using traits_type = Traits;
    using value_type = C;
    using size_type = std::size_t;
    using const_pointer = const C*;
    using const_iterator = const C*;

    static constexpr size_type npos = static_cast<size_type>(-1);
    // Units of room inside the object; the longest in-place text is one less.
    static constexpr size_type kInPlaceRoom = 24 / sizeof(C);
    static constexpr size_type kInPlaceMaxLength = kInPlaceRoom - 1;
    // The first length that is refused.
    static constexpr size_type kLengthLimit = 0x7FFFFFFFFFFFFFFFull;

    basic_string() noexcept { set_in_place_length(0); }
    // A null pointer reads as the empty text.
    basic_string(const C* s) : basic_string() { assign(s); }
    basic_string(const C* s, size_type n) : basic_string() { assign(s, n); }
    basic_string(size_type n, C c) : basic_string() { append(n, c); }
    basic_string(const basic_string& other) noexcept
        : mode_(other.mode_), storage_(other.storage_) {
        if (on_heap()) storage_.heap.block->count.fetch_add(1, std::memory_order_relaxed);
    }
    basic_string(basic_string&& other) noexcept : mode_(other.mode_), storage_(other.storage_) {
        other.set_in_place_length(0);
    }
    ~basic_string() { drop_block(); }

    basic_string& operator=(const basic_string& other) noexcept {
        basic_string(other).swap(*this);
        return *this;
    }
    basic_string& operator=(basic_string&& other) noexcept {
        if (this != &other) basic_string(std::move(other)).swap(*this);
        return *this;
    }
    basic_string& operator=(const C* s) { return assign(s); }

    basic_string& assign(const C* s, size_type n) {
        return change_from(
            s, [&](const C* src) { Traits::copy(open_gap(0, size(), n, Growth::kExact), src, n); });
    }
    basic_string& assign(const C* s) { return assign(s, s != nullptr ? Traits::length(s) : 0); }

    basic_string& append(const C* s, size_type n) {
        return change_from(s, [&](const C* src) {
            Traits::copy(open_gap(size(), 0, n, Growth::kStepwise), src, n);
        });
    }
    basic_string& append(const C* s) { return append(s, s != nullptr ? Traits::length(s) : 0); }
    basic_string& append(const basic_string& s) { return append(s.data(), s.size()); }
    basic_string& append(size_type n, C c) {
        Traits::assign(open_gap(size(), 0, n, Growth::kStepwise), n, c);
        return *this;
    }
    void push_back(C c) { append(1, c); }

    basic_string& operator+=(const basic_string& s) { return append(s); }
    basic_string& operator+=(const C* s) { return append(s); }
    basic_string& operator+=(C c) { return append(1, c); }

    basic_string& insert(size_type pos, const C* s, size_type n) {
        check_position(pos);
        return change_from(
            s, [&](const C* src) { Traits::copy(open_gap(pos, 0, n, Growth::kExact), src, n); });
    }
    basic_string& insert(size_type pos, const C* s) {
        return insert(pos, s, s != nullptr ? Traits::length(s) : 0);
    }
    basic_string& insert(size_type pos, const basic_string& s) {
        return insert(pos, s.data(), s.size());
    }

    basic_string& erase(size_type pos = 0, size_type n = npos) {
        check_position(pos);
        open_gap(pos, clamp_count(pos, n), 0, Growth::kExact);
        return *this;
    }
    void clear() noexcept {
        drop_block();
        set_in_place_length(0);
    }
    void resize(size_type n, C c = C()) {
        check_length(n);  // before the fill, so the compiler sees its count bounded
        const size_type len = size();
        if (n < len) {
            open_gap(n, len - n, 0, Growth::kExact);
        } else if (n > len) {
            Traits::assign(open_gap(len, 0, n - len, Growth::kExact), n - len, c);
        }
    }
    // Makes the heap block hold at least n units. In-place text stays in place:
    // the form follows the length alone.
    void reserve(size_type n) {
        check_length(n);
        if (on_heap() && n > storage_.heap.capacity) {
            move_to_block(capacity_for_room(n + kCountUnits), size(), 0, 0);
        }
    }

    size_type size() const noexcept {
        return on_heap() ? static_cast<size_type>(storage_.heap.end - units_of(storage_.heap.block))
                         : mode_;
    }
    size_type length() const noexcept { return size(); }
    bool empty() const noexcept { return size() == 0; }
    // Always zero-terminated.
    const C* data() const noexcept {
        return on_heap() ? units_of(storage_.heap.block) : storage_.local;
    }
    const C* c_str() const noexcept { return data(); }
    // i <= size(); i == size() gives the terminator.
    const C& operator[](size_type i) const noexcept { return data()[i]; }
    // The last unit, or the terminator of an empty string.
    const C& back() const noexcept { return data()[empty() ? 0 : size() - 1]; }
    const C* begin() const noexcept { return data(); }
    const C* end() const noexcept { return data() + size(); }

    // Units the current storage holds without a new block.
    size_type capacity() const noexcept {
        return on_heap() ? storage_.heap.capacity : kInPlaceMaxLength;
    }
    // Strings sharing the heap block, or 0 for in-place text.
    std::uint64_t use_count() const noexcept {
        return on_heap() ? storage_.heap.block->count.load(std::memory_order_relaxed) : 0;
    }

    size_type find(C c, size_type pos = 0) const noexcept {
        const size_type len = size();
        if (pos >= len) return npos;
        const C* hit = Traits::find(data() + pos, len - pos, c);
        return hit != nullptr ? static_cast<size_type>(hit - data()) : npos;
    }
    size_type find(const C* s, size_type pos = 0) const noexcept {
        return find_units(s, s != nullptr ? Traits::length(s) : 0, pos);
    }
    size_type find(const basic_string& s, size_type pos = 0) const noexcept {
        return find_units(s.data(), s.size(), pos);
    }
    size_type rfind(C c, size_type pos = npos) const noexcept { return rfind_units(&c, 1, pos); }
    size_type rfind(const C* s, size_type pos = npos) const noexcept {
        return rfind_units(s, s != nullptr ? Traits::length(s) : 0, pos);
    }
    size_type rfind(const basic_string& s, size_type pos = npos) const noexcept {
        return rfind_units(s.data(), s.size(), pos);
    }

    basic_string substr(size_type pos = 0, size_type n = npos) const {
        check_position(pos);
        const size_type count = clamp_count(pos, n);
        if (pos == 0 && count == size()) return *this;
        return basic_string(data() + pos, count);
    }

    int compare(const basic_string& s) const noexcept {
        return compare_units(data(), size(), s.data(), s.size());
    }
    int compare(const C* s) const noexcept {
        return compare_units(data(), size(), s, s != nullptr ? Traits::length(s) : 0);
    }

    void swap(basic_string& other) noexcept {
        std::swap(mode_, other.mode_);
        std::swap(storage_, other.storage_);
    }

    friend void swap(basic_string& a, basic_string& b) noexcept { a.swap(b); }

    friend basic_string operator+(const basic_string& a, const basic_string& b) {
        return concatenate(a.data(), a.size(), b.data(), b.size());
    }
    friend basic_string operator+(const basic_string& a, const C* b) {
        return concatenate(a.data(), a.size(), b, b != nullptr ? Traits::length(b) : 0);
    }
    friend basic_string operator+(const C* a, const basic_string& b) {
        return concatenate(a, a != nullptr ? Traits::length(a) : 0, b.data(), b.size());
    }
    friend basic_string operator+(const basic_string& a, C b) {
        return concatenate(a.data(), a.size(), &b, 1);
    }

    friend bool operator==(const basic_string& a, const basic_string& b) noexcept {
        return a.size() == b.size() && a.compare(b) == 0;
    }
    friend bool operator==(const basic_string& a, const C* b) noexcept { return a.compare(b) == 0; }
    friend bool operator==(const C* a, const basic_string& b) noexcept { return b.compare(a) == 0; }
    friend bool operator!=(const basic_string& a, const basic_string& b) noexcept {
        return !(a == b);
    }
    friend bool operator!=(const basic_string& a, const C* b) noexcept { return !(a == b); }
    friend bool operator!=(const C* a, const basic_string& b) noexcept { return !(a == b); }
    friend bool operator<(const basic_string& a, const basic_string& b) noexcept {
        return a.compare(b) < 0;
    }
    friend bool operator<(const basic_string& a, const C* b) noexcept { return a.compare(b) < 0; }
    friend bool operator<(const C* a, const basic_string& b) noexcept { return b.compare(a) > 0; }

  private:
    struct Block {
        std::atomic<std::uint64_t> count;
    };
    struct HeapText {
        Block* block;
        C* end;              // the terminator's position
        size_type capacity;  // units of text, terminator not counted
    };
    union Storage {
        C local[kInPlaceRoom];
        HeapText heap;
    };
    enum class Growth { kExact, kStepwise };

    static_assert(sizeof(Block) == 8, "the reference count takes 8 bytes");
    static_assert(sizeof(HeapText) <= sizeof(C) * kInPlaceRoom, "heap reference fits the room");
    static constexpr std::uint32_t kHeapMode = static_cast<std::uint32_t>(kInPlaceRoom);
    static constexpr size_type kCountUnits = sizeof(Block) / sizeof(C);
    // Past this a block could never be allocated; keeps the byte arithmetic from wrapping.
    static constexpr size_type kMaxRoom = (static_cast<size_type>(PTRDIFF_MAX) - 1024) / sizeof(C);

    bool on_heap() const noexcept { return mode_ == kHeapMode; }

    static C* units_of(Block* block) noexcept {
        return reinterpret_cast<C*>(reinterpret_cast<unsigned char*>(block) + sizeof(Block));
    }

    void set_in_place_length(size_type n) noexcept {
        mode_ = static_cast<std::uint32_t>(n);
        storage_.local[n] = Traits::terminator();
    }

    // Gives up this string's reference; the form must be set again afterwards.
    void drop_block() noexcept {
        if (!on_heap()) return;
        Block* block = storage_.heap.block;
        // acq_rel: the last owner must see every other owner's reads finished.
        if (block->count.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            block->~Block();
            ::operator delete(block);
        }
        mode_ = 0;
    }

    bool owns_block_alone() const noexcept {
        return storage_.heap.block->count.load(std::memory_order_acquire) == 1;
    }

    static Block* allocate_block(size_type capacity) {
        void* memory = ::operator new(sizeof(Block) + (capacity + 1) * sizeof(C));
        return new (memory) Block{{1}};
    }

    // Text capacity of a block whose room, counting the reference count, is `room` units.
    static size_type capacity_for_room(size_type room) {
        if (room > kMaxRoom) throw std::bad_alloc();
        size_type bytes = room * sizeof(C);
        const size_type step = bytes < 257     ? 8
                               : bytes < 513   ? 16
                               : bytes < 1024  ? 32
                               : bytes < 2048  ? 64
                               : bytes < 4096  ? 128
                               : bytes < 8192  ? 256
                               : bytes < 16384 ? 512
                                               : 1;
        bytes = (bytes + step - 1) / step * step;
        return bytes / sizeof(C) - kCountUnits;
    }

    static void check_length(size_type n) {
        if (n >= kLengthLimit) throw std::length_error("basic_string");
    }
    void check_position(size_type pos) const {
        if (pos > size()) throw std::out_of_range("basic_string");
    }
    size_type clamp_count(size_type pos, size_type n) const noexcept {
        const size_type available = size() - pos;
        return n < available ? n : available;
    }

    // Runs change(source). Source text inside our own storage would move or
    // vanish under open_gap, so the change then reads from a copy of this string
    // instead (a shared block stays put while the copy holds it).
    template <class Change>
    basic_string& change_from(const C* source, Change change) {
        const std::less<const C*> before;
        const bool inside =
            source != nullptr && !before(source, data()) && !before(data() + size(), source);
        if (!inside) {
            change(source);
        } else {
            const basic_string keep(*this);
            change(keep.data() + (source - data()));
        }
        return *this;
    }

    // Replaces `removed` units at `pos` with a gap of `inserted` units and returns
    // the gap for the caller to fill. Afterwards the string is terminated, owns its
    // block alone and is in the form its new length calls for. Returns nullptr when
    // nothing changes. Requires pos <= size() and removed <= size() - pos.
    C* open_gap(size_type pos, size_type removed, size_type inserted, Growth growth) {
        if (removed == 0 && inserted == 0) return nullptr;
        const size_type len = size();
        if (inserted >= kLengthLimit || len - removed >= kLengthLimit - inserted) {
            throw std::length_error("basic_string");
        }
        const size_type new_len = len - removed + inserted;
        const size_type tail = len - pos - removed;

        if (new_len <= kInPlaceMaxLength) {
            if (on_heap()) {
                // Save what survives before the block reference is overwritten.
                C kept[kInPlaceRoom];
                const C* old = data();
                Traits::copy(kept, old, pos);
                Traits::copy(kept + pos, old + pos + removed, tail);
                drop_block();
                Traits::copy(storage_.local, kept, pos);
                Traits::copy(storage_.local + pos + inserted, kept + pos, tail);
            } else {
                Traits::move(storage_.local + pos + inserted, storage_.local + pos + removed, tail);
            }
            set_in_place_length(new_len);
            return storage_.local + pos;
        }

        if (on_heap() && new_len <= storage_.heap.capacity && owns_block_alone()) {
            C* text = units_of(storage_.heap.block);
            Traits::move(text + pos + inserted, text + pos + removed, tail);
            storage_.heap.end = text + new_len;
            *storage_.heap.end = Traits::terminator();
            return text + pos;
        }

        size_type capacity = capacity_for_room(new_len + kCountUnits);
        if (on_heap()) {
            // A shared block is first copied at its own size, then grown if short.
            const size_type current_room = storage_.heap.capacity + kCountUnits;
            if (new_len <= storage_.heap.capacity) {
                capacity = storage_.heap.capacity;
            } else if (growth == Growth::kStepwise) {
                const size_type wider = current_room + current_room / 2;
                const size_type room = wider < kMaxRoom ? wider : kMaxRoom;
                if (room > new_len + kCountUnits) capacity = capacity_for_room(room);
            }
        }
        return move_to_block(capacity, pos, removed, inserted);
    }

    // Moves the text into a fresh block of the given capacity, leaving a gap as
    // open_gap describes, and returns the gap.
    C* move_to_block(size_type capacity, size_type pos, size_type removed, size_type inserted) {
        const size_type len = size();
        const size_type new_len = len - removed + inserted;
        const size_type tail = len - pos - removed;
        Block* fresh = allocate_block(capacity);
        C* text = units_of(fresh);
        const C* old = data();
        Traits::copy(text, old, pos);
        Traits::copy(text + pos + inserted, old + pos + removed, tail);
        text[new_len] = Traits::terminator();
        drop_block();
        mode_ = kHeapMode;
        storage_.heap = HeapText{fresh, text + new_len, capacity};
        return text + pos;
    }

    static basic_string concatenate(const C* a, size_type na, const C* b, size_type nb) {
        check_length(na);
        check_length(nb);
        basic_string joined;
        C* text = joined.open_gap(0, 0, na + nb, Growth::kExact);
        Traits::copy(text, a, na);
        Traits::copy(text + na, b, nb);
        return joined;
    }

    static int compare_units(const C* a, size_type na, const C* b, size_type nb) noexcept {
        const int common = Traits::compare(a, b, na < nb ? na : nb);
        if (common != 0) return common;
        return na < nb ? -1 : (na > nb ? 1 : 0);
    }

    size_type find_units(const C* s, size_type n, size_type pos) const noexcept {
        const size_type len = size();
        if (pos > len || n > len - pos) return npos;
        if (n == 0) return pos;
        const C* text = data();
        for (size_type i = pos; i <= len - n; ++i) {
            const C* hit = Traits::find(text + i, len - n + 1 - i, s[0]);
            if (hit == nullptr) return npos;
            i = static_cast<size_type>(hit - text);
            if (Traits::compare(hit, s, n) == 0) return i;
        }
        return npos;
    }

    size_type rfind_units(const C* s, size_type n, size_type pos) const noexcept {
        const size_type len = size();
        if (n > len) return npos;
        const C* text = data();
        for (size_type i = (pos < len - n ? pos : len - n) + 1; i > 0; --i) {
            if (Traits::compare(text + i - 1, s, n) == 0) return i - 1;
        }
        return npos;
    }

    std::uint32_t mode_;
    Storage storage_{};
};

}  // namespace stdx
