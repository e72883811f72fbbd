// SPDX-License-Identifier: Apache-2.0
#include "flooks.h"

#include "fentry.h"
#include "fexterncomputation.h"
#include "ficons.h"
#include "fobjectmanager.h"
#include "fplainvalue.h"
#include "fruncontrol.h"

#include <QCoreApplication>
#include <QIcon>
#include <map>

namespace {
using Map = std::map<const FClassInfo *, FClassLook>;

QString tr(const char *text) { return QCoreApplication::translate("FLooks", text); }

QString valueText(const FObject &object)
{
    const FExprBase value(std::const_pointer_cast<FObject>(object.shared_from_this()));
    if (!value.canSafelyBeUpdated(false))
        return QString();
    return Q(FPlainValue::of(value).shown("", 6));
}

using State = std::pair<QString, QString>;

State stateFor(const FExternComputation &computation, const std::shared_ptr<FDesign> &design)
{
    if (computation.isRunningFor(design.get()))
        return {":/stateRunning", tr("running")};
    const FRunRecord *last =
        FRunControl::instance()->lastRun(computation.getName(), design->getName());
    if (last && !last->succeeded())
        return {":/stateFailed", Q(last->reason)};
    if (!computation.hasRunFor(design.get()))
        return {};
    if (computation.isUpToDateFor(design))
        return {":/stateFinished", tr("up to date")};
    return {":/stateStale", tr("its inputs changed since it ran")};
}

State runState(const FObject &object)
{
    const auto *computation = dynamic_cast<const FExternComputation *>(&object);
    const auto design = FDesign::chosen();
    return computation && design ? stateFor(*computation, design) : State();
}

/// Of all computations for a design the one that asks most for a look.
State designState(const FObject &object)
{
    const auto design = std::dynamic_pointer_cast<FDesign>(
        std::const_pointer_cast<FObject>(object.shared_from_this()));
    if (!design)
        return {};
    static const char *const order[] = {":/stateRunning", ":/stateFailed", ":/stateStale",
                                        ":/stateFinished"};
    std::map<QString, State> found;
    for (const auto &one : getManageds<FExternComputation>())
        if (const auto computation = one.getPtr()) {
            const State state = stateFor(*computation, design);
            found.emplace(state.first, state);
        }
    for (const char *icon : order) {
        const auto state = found.find(QLatin1String(icon));
        if (state != found.end())
            return state->second;
    }
    return {};
}

/// What the host knows of its own classes.
Map hostLooks()
{
    Map looks;
    const auto add = [&looks](const FClassInfo &klass, const char *icon, const QString &noun,
                              const QString &group, double place) {
        FClassLook look;
        look.icon = QString::fromLatin1(icon);
        look.noun = noun;
        look.group = group;
        look.place = place;
        looks[&klass] = look;
        return &looks[&klass];
    };
    add(FObject::staticClass(), ":/object", tr("Object"), tr("Other objects"), 90);
    add(FParameter::staticClass(), ":/parameter", tr("Parameter"), tr("Parameters"), 10)->detail =
        valueText;
    add(FDesign::staticClass(), ":/design", tr("Design"), tr("Designs"), 20)->state = designState;
    add(FExternComputation::staticClass(), ":/computation", tr("Computation"), tr("Computations"),
        30)
        ->state = runState;
    add(FDefinitionBase::staticClass(), ":/definition", tr("Definition"), tr("Definitions"), 40);
    add(FConfiguration::staticClass(), ":/configuration", tr("Configuration"), tr("Configurations"),
        50);
    add(FResults::staticClass(), ":/results", tr("Results"), tr("Results"), 60)->isHidden = true;
    add(FEntryBase::staticClass(), ":/entry", tr("Entry"), tr("Entries"), 55);
    return looks;
}

Map &own()
{
    static Map looks = hostLooks();
    return looks;
}

Map &whole()
{
    static Map looks;
    return looks;
}
} // namespace

void FLooks::add(const FClassInfo &klass, const FClassLook &look)
{
    own()[&klass] = look;
    whole().clear();
}

const FClassLook &FLooks::of(const FClassInfo &klass)
{
    const auto known = whole().find(&klass);
    if (known != whole().end())
        return known->second;
    FClassLook look = klass.base ? of(*klass.base) : FClassLook();
    const auto found = own().find(&klass);
    if (found != own().end()) {
        const FClassLook &mine = found->second;
        const auto take = [](auto &into, const auto &from, bool isThere) {
            if (isThere)
                into = from;
        };
        take(look.icon, mine.icon, !mine.icon.isEmpty());
        take(look.noun, mine.noun, !mine.noun.isEmpty());
        take(look.group, mine.group, !mine.group.isEmpty());
        take(look.place, mine.place, mine.place != 0);
        take(look.children, mine.children, bool(mine.children));
        take(look.detail, mine.detail, bool(mine.detail));
        take(look.state, mine.state, bool(mine.state));
        take(look.takesAlong, mine.takesAlong, bool(mine.takesAlong));
        take(look.open, mine.open, bool(mine.open));
        look.isHidden = mine.isHidden;
    }
    return whole()[&klass] = look;
}

QIcon FLooks::icon(const FObject &object) { return FIcons::icon(of(object).icon); }

QString FLooks::nameOf(const FObject &object)
{
    if (const auto *managed = dynamic_cast<const FManaged *>(&object))
        return Q(managed->getName());
    if (const auto *entry = dynamic_cast<const FEntryBase *>(&object))
        return Q(entry->getName());
    return Q(object.scriptText());
}
