// SPDX-License-Identifier: Apache-2.0
#include "fgeninteditor.h"

#include "fcmdbinder.h"
#include "fgenintcomputation.h"
#include "fgenintworkbench.h"
#include "fhistory.h"
#include "fobjectmanager.h"

F_CLASS_IMPL(FGenIntEditor)

std::shared_ptr<FGenIntEditor> FGenIntEditor::create(const std::string &name)
{
    const auto editor = f_make_shared<FGenIntEditor>(name);
    editor->registerObject();
    return editor;
}

void FGenIntEditor::constructFObject()
{
    FManaged::constructFObject();
    if (!mInitPrototype)
        mDefinition.registerClient(shared_from_this(), false);
}

std::shared_ptr<FGenIntEditor>
FGenIntEditor::setDefinition(const FExpr<FDefinitionGenInt> &definition)
{
    const auto self = shared_from_base<FGenIntEditor>();
    FHistoryTransaction step(nullptr, F_TEXT("set definition"), true);
    mDefinition = definition;
    step.addStep(self);
    setImediateUpdate(true);
    setOutOfDate(0);
    return self;
}

void FGenIntEditor::doUpdate() const
{
    if (const auto definition = mDefinition.getPtr())
        for (const auto &one : getManageds<FGenIntComputation>()) {
            const auto computation = one.getPtr();
            const auto configuration =
                computation ? computation->getConfiguration().getPtr() : nullptr;
            if (configuration && configuration->getDefinition().getExpr() == definition)
                FGenIntWorkbench::instance()->openAs(computation.get(),
                                                     computation->getName() + "_Connector");
        }
    FManaged::doUpdate();
}

void FGenIntEditor::visitState(FStateVisitor &state)
{
    FManaged::visitState(state);
    state(mDefinition);
}

void FGenIntEditor::initCmds()
{
    using T = FGenIntEditor;
    FCmdBinder<T> c;
    c.creator("genericIntegrationEditor", &T::create);
    c.attribute("setDefinition", &T::setDefinition, &T::getDefinition, FArg{"definition"})
        .title(F_TEXT("Definition"))
        .category("Definition");
}
