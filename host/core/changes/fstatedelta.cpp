// SPDX-License-Identifier: Apache-2.0
#include "fstatedelta.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <string_view>
#include <vector>

namespace {
using Field = FStateVisitor::Field;
using Utf8 = std::shared_ptr<const std::string>;

/// Stands for a text: pieces of the other one, each with some of its own letters behind. In bytes,
/// whatever the letters are.
struct Difference
{
    struct Piece
    {
        size_t from, size, own;
    };
    std::vector<Piece> pieces;
    std::string own;

    void take(size_t from, size_t size) { pieces.push_back({from, size, 0}); }
    void add(std::string_view text)
    {
        own += text;
        pieces.back().own += text.size();
    }
    size_t bytes() const { return sizeof(Difference) + pieces.size() * sizeof(Piece) + own.size(); }
};

/// The bytes of a text that its holders share; none for a field of another kind.
std::string_view bytesOf(const std::any &field)
{
    if (const auto *wide = std::any_cast<QString>(&field))
        return {reinterpret_cast<const char *>(wide->constData()),
                size_t(wide->size()) * sizeof(QChar)};
    const auto *narrow = std::any_cast<Utf8>(&field);
    return narrow && *narrow ? std::string_view(**narrow) : std::string_view();
}

bool isSame(std::string_view a, std::string_view b)
{
    return a.data() == b.data() && a.size() == b.size();
}

constexpr size_t kBlock = 4096; // the library compares blocks at the speed of memory

size_t commonStart(std::string_view a, std::string_view b)
{
    const size_t end = std::min(a.size(), b.size());
    size_t at = 0;
    while (end - at >= kBlock && std::memcmp(a.data() + at, b.data() + at, kBlock) == 0)
        at += kBlock;
    while (at < end && a[at] == b[at])
        ++at;
    return at;
}

size_t commonEnd(std::string_view a, std::string_view b)
{
    const size_t end = std::min(a.size(), b.size());
    const char *const endA = a.data() + a.size(), *const endB = b.data() + b.size();
    size_t count = 0;
    while (end - count >= kBlock &&
           std::memcmp(endA - count - kBlock, endB - count - kBlock, kBlock) == 0)
        count += kBlock;
    while (count < end && endA[-1 - std::ptrdiff_t(count)] == endB[-1 - std::ptrdiff_t(count)])
        ++count;
    return count;
}

/// Finds where two texts go on alike behind a place where they differ.
class Rejoin
{
public:
    /// Both places, counted from the starts; false if there is none near or it took too long.
    bool find(std::string_view a, std::string_view b)
    {
        const std::string_view window = b.substr(0, kReach);
        for (inA = 0; inA < kReach && inA + kAnchor <= a.size() && mWork > 0; inA += kAnchor) {
            inB = window.find(a.substr(inA, kAnchor));
            mWork -= std::ptrdiff_t(std::min(inB, window.size()));
            if (inB == std::string_view::npos)
                continue;
            for (; inA > 0 && inB > 0 && a[inA - 1] == b[inB - 1]; --inA)
                --inB;
            return true;
        }
        return false;
    }
    size_t inA = 0, inB = 0;

private:
    static constexpr size_t kReach = 4096, kAnchor = 32;
    std::ptrdiff_t mWork = 8 << 20; // bytes that may be searched
};

/// Adds what lies between the common start and end of two texts: a name that is replaced changes
/// many places that are far from each other. \p from is where \p b begins.
void addMiddle(std::string_view a, std::string_view b, size_t from, size_t most, Difference *delta)
{
    Rejoin next;
    while (delta->bytes() <= most && next.find(a, b)) {
        delta->add(a.substr(0, next.inA));
        a.remove_prefix(next.inA);
        b.remove_prefix(next.inB);
        from += next.inB;
        const size_t size = commonStart(a, b);
        delta->take(from, size);
        a.remove_prefix(size);
        b.remove_prefix(size);
        from += size;
    }
    if (delta->bytes() + a.size() <= most)
        delta->add(a);
    else
        delta->pieces.clear();
}

/// Nothing where it isn't worth it: whole texts are shared, a difference is a copy.
std::optional<Difference> difference(std::string_view text, std::string_view other)
{
    const size_t most = text.size() / 2;
    if (text.size() < FStateDelta::kLongText || other.size() < text.size() - most)
        return std::nullopt;
    const bool same = isSame(text, other);
    const size_t prefix = same ? text.size() : commonStart(text, other);
    const size_t suffix = commonEnd(text.substr(prefix), other.substr(prefix));
    Difference delta;
    delta.take(0, prefix);
    addMiddle(text.substr(prefix, text.size() - prefix - suffix),
              other.substr(prefix, other.size() - prefix - suffix), prefix, most, &delta);
    if (delta.pieces.empty())
        return std::nullopt;
    delta.take(other.size() - suffix, suffix);
    delta.own.shrink_to_fit();
    delta.pieces.shrink_to_fit();
    return delta;
}

/// Writes the text that \p delta stands for.
void write(const Difference &delta, std::string_view other, char *to)
{
    const char *own = delta.own.data();
    for (const Difference::Piece &piece : delta.pieces) {
        Q_ASSERT(piece.from + piece.size <= other.size());
        std::memcpy(to, other.data() + piece.from, piece.size);
        std::memcpy(to + piece.size, own, piece.own);
        to += piece.size + piece.own;
        own += piece.own;
    }
}

/// The same in the form of \p other.
Field restored(const Difference &delta, const Field &other)
{
    const std::string_view text = bytesOf(other.value);
    size_t size = 0;
    for (const Difference::Piece &piece : delta.pieces)
        size += piece.size + piece.own;
    if (delta.own.empty() && size == text.size())
        return other;
    if (std::any_cast<QString>(&other.value)) {
        QString wide(int(size / sizeof(QChar)), Qt::Uninitialized);
        write(delta, text, reinterpret_cast<char *>(wide.data()));
        return {wide, size};
    }
    auto narrow = std::make_shared<std::string>(size, '\0');
    write(delta, text, &(*narrow)[0]);
    return {Utf8(narrow), size};
}

/// \p state with the fields that \p change gives another value for; itself without one.
template <class Change>
FStateDelta::State changed(const FStateDelta::State &state, Change change)
{
    std::shared_ptr<FStateDelta::Values> copy;
    for (size_t i = 0; i < state->fields.size(); ++i) {
        std::optional<Field> field = change(state->fields[i], i);
        if (!field)
            continue;
        if (!copy)
            copy = std::make_shared<FStateDelta::Values>(*state);
        copy->fields[i] = std::move(*field);
    }
    return copy ? copy : state;
}
} // namespace

FStateDelta::State FStateDelta::reduced(const State &state, const Values &other)
{
    return changed(
        state,
        [&](const Field &field, size_t i) -> std::optional<Field> {
            auto delta = difference(bytesOf(field.value), bytesOf(other.fields[i].value));
            if (!delta)
                return std::nullopt;
            const size_t bytes = delta->bytes();
            return Field{std::move(*delta), bytes};
        });
}

FStateDelta::State FStateDelta::full(const State &reduced, const Values &other)
{
    return changed(
        reduced,
        [&](const Field &field, size_t i) -> std::optional<Field> {
            const auto *delta = std::any_cast<Difference>(&field.value);
            if (!delta)
                return std::nullopt;
            return restored(*delta, other.fields[i]);
        });
}

size_t FStateDelta::bytes(const Values &reduced, const Values &other)
{
    size_t bytes = FStateDelta::bytes(reduced);
    for (size_t i = 0; i < reduced.fields.size(); ++i) {
        const std::string_view text = bytesOf(reduced.fields[i].value);
        if (!text.empty() && isSame(text, bytesOf(other.fields[i].value)))
            bytes -= reduced.fields[i].bytes;
    }
    return bytes;
}

size_t FStateDelta::bytes(const Values &state)
{
    size_t bytes = sizeof(Values) + state.fields.size() * sizeof(Field);
    for (const Field &field : state.fields)
        bytes += field.bytes;
    return bytes;
}
