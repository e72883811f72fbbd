// SPDX-License-Identifier: Apache-2.0
#include "fstatedelta.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <string_view>

namespace {
using Field = FStateVisitor::Field;
using Utf8 = std::shared_ptr<const std::string>;

/// Stands for a text: the start and the end of the other one with \p middle between them. In bytes,
/// whatever the letters are.
struct Difference
{
    size_t prefix, suffix;
    std::string middle;
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

/// Nothing where it isn't worth it: whole texts are shared, the middle of one is a copy.
std::optional<Difference> difference(std::string_view text, std::string_view other)
{
    const size_t most = text.size() / 2;
    if (text.size() < FStateDelta::kLongText || other.size() < text.size() - most)
        return std::nullopt;
    if (isSame(text, other))
        return Difference{text.size(), 0, {}};
    const size_t prefix = commonStart(text, other);
    const size_t suffix = commonEnd(text.substr(prefix), other.substr(prefix));
    const size_t middle = text.size() - prefix - suffix;
    if (middle > most)
        return std::nullopt;
    return Difference{prefix, suffix, std::string(text.substr(prefix, middle))};
}

/// The text that \p difference stands for, in the form of \p other.
Field restored(const Difference &difference, const Field &other)
{
    const std::string_view text = bytesOf(other.value);
    const size_t size = difference.prefix + difference.middle.size() + difference.suffix;
    Q_ASSERT(difference.prefix + difference.suffix <= text.size());
    if (difference.middle.empty() && size == text.size())
        return other;
    const auto write = [&](char *to) {
        std::memcpy(to, text.data(), difference.prefix);
        to += difference.prefix;
        std::memcpy(to, difference.middle.data(), difference.middle.size());
        to += difference.middle.size();
        std::memcpy(to, text.data() + text.size() - difference.suffix, difference.suffix);
    };
    if (std::any_cast<QString>(&other.value)) {
        QString wide(int(size / sizeof(QChar)), Qt::Uninitialized);
        write(reinterpret_cast<char *>(wide.data()));
        return {wide, size};
    }
    auto narrow = std::make_shared<std::string>(size, '\0');
    write(&(*narrow)[0]);
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
            const size_t bytes = sizeof(Difference) + delta->middle.size();
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
