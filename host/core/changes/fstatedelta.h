// SPDX-License-Identifier: Apache-2.0
#ifndef FSTATEDELTA_H
#define FSTATEDELTA_H
#include "fobject.h"

/// A state of an object as it is kept beside another one of the same object: a long text as what
/// differs from the text of the other, so that a small edit costs little however long the text is.
class FStateDelta
{
public:
    using Values = FStateVisitor::Values;
    using State = std::shared_ptr<const Values>;
    /// Texts of fewer bytes are kept whole.
    static constexpr size_t kLongText = 8192;

    /// \p state as it is kept beside \p other; itself if it has no long text.
    static State reduced(const State &state, const Values &other);
    /// The state that was reduced; \p other has the same values as then.
    static State full(const State &reduced, const Values &other);
    /// What a reduced state keeps that \p other doesn't.
    static size_t bytes(const Values &reduced, const Values &other);
    /// What a full state keeps.
    static size_t bytes(const Values &state);
};
#endif
