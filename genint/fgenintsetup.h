// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTSETUP_H
#define FGENINTSETUP_H
#include "fgenintcomputation.h"
#include "fscripterror.h"

#include <QFile>

class FImportRules;

/// Takes couplings from one project to another: a computation with its configuration, definition,
/// templates and connector, or a chain of those, as saved definitions one behind the other.
namespace FGenIntSetup {
using Computations = std::vector<std::shared_ptr<FGenIntComputation>>;
enum class What { Chain, Only, Nothing };

/// The other computations that feed this one or are fed by it, directly or through others. It is
/// their neighbourhood: what one of them feeds besides doesn't count.
Computations chainOf(const std::shared_ptr<FGenIntComputation> &computation);
/// What a set-up may say: templates, configuration, computation, connector. Entries may refer to
/// the project.
const FImportRules &rules();
/// Connector and computation, "beam_connector/beam", or the computation alone.
std::string pathOf(const FGenIntComputation &computation);
/// Asks whether the chain is to go along; without a chain nobody is asked.
What ask(const std::shared_ptr<FGenIntComputation> &computation);
/// The computation alone or with its chain.
Computations membersOf(const std::shared_ptr<FGenIntComputation> &computation, bool chain);
/// Whatever of the project travels with a computation: configuration, definition, templates,
/// connector.
std::vector<std::shared_ptr<FManaged>> companionsOf(const FGenIntComputation &computation);
/// The parts as text, suppliers first. A member without configuration or definition is passed over.
QByteArray text(const Computations &members, QString *why = nullptr);

/// The same into a file, in one step; false with the reason if nothing was written.
bool save(const std::shared_ptr<FGenIntComputation> &computation, bool chain, const QString &path,
          QString *why);

struct Outcome
{
    Computations computations;
    /// Entries that refer to objects which the project lacks, a line each; they have no value.
    std::string missing;
    /// Why nothing was taken in; empty if all was.
    std::vector<FScriptError> errors;
};
/// Reads the parts of a text as data, as one step. If one of them can't be read whole nothing is
/// left of any. \p file is the name for messages.
Outcome read(const std::string &text, const std::string &file);
} // namespace FGenIntSetup
#endif
