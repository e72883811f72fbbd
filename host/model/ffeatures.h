// SPDX-License-Identifier: Apache-2.0
#ifndef FFEATURES_H
#define FFEATURES_H
#include "fparameter.h"

/// Geometry that can be drawn. This host has no kernel that makes any: libraries derive theirs.
class FDrawable : public FEntity
{
    F_CLASS(FDrawable, FEntity)
public:
    using FEntity::FEntity;
    static void initCmds() {}
};

/// Geometry that belongs together.
class FEntityGroup : public FEntity
{
    F_CLASS(FEntityGroup, FEntity)
public:
    using FEntity::FEntity;
    static void initCmds() {}
};

/// A part of what a feature makes.
class FFeatureMember : public FEntity
{
    F_CLASS(FFeatureMember, FEntity)
public:
    using FEntity::FEntity;
    static void initCmds() {}
};

/// How geometry is made, or written.
class FFeatureDefinitionBase : public FEntity
{
    F_CLASS(FFeatureDefinitionBase, FEntity)
public:
    using FEntity::FEntity;
    /// True if it writes geometry.
    virtual bool isExportFeature() const { return false; }
    static void initCmds() {}
};
#endif
