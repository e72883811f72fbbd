// SPDX-License-Identifier: Apache-2.0
#ifndef TOY_H
#define TOY_H
#include "fcmdbinder.h"
#include "fmanaged.h"

enum class Shape : unsigned { Round, Square };
F_ENUM(Shape)
F_ENUM_IMPL(Shape, {Shape::Round, "Round"}, {Shape::Square, "Square"})

/// A class of a library that the window has never heard of.
class FToy : public FManaged
{
    F_CLASS(FToy, FManaged)
public:
    explicit FToy(std::string name = std::string())
        : FManaged(std::move(name))
    {
    }
    static std::shared_ptr<FToy> create(const std::string &name)
    {
        auto toy = f_make_shared<FToy>(name);
        toy->registerObject();
        return toy;
    }
    void setText(const std::string &text) { mText = text; }
    const std::string &getText() const { return mText; }
    FStatus setSize(double size)
    {
        if (size < 0)
            return {FReason::unexpected("a size of 0 or more", std::to_string(int(size)))};
        mSize = size;
        return {};
    }
    double getSize() const { return mSize; }
    void setOn(bool on) { mOn = on; }
    bool isOn() const { return mOn; }
    void setShape(Shape shape) { mShape = shape; }
    Shape getShape() const { return mShape; }
    void setFriend(const FExpr<FToy> &other) { mFriend = other; }
    FExpr<FToy> getFriend() const { return mFriend; }
    void setSecret(const std::string &) {}
    std::string getSecret() const { return "secret"; }
    void poke() { ++mPokes; }
    int pokes() const { return mPokes; }
    void visitState(FStateVisitor &state) override
    {
        FManaged::visitState(state);
        state(mText)(mSize)(mOn)(mShape)(mFriend);
    }
    static void initCmds()
    {
        FCmdBinder<FToy> c;
        c.creator("toy", &FToy::create).fills();
        c.attribute("setText", &FToy::setText, &FToy::getText, FArg{"text"})
            .title("Text")
            .category("Looks", 2.0);
        c.attribute("setSize", &FToy::setSize, &FToy::getSize, FArg{"size"}).title("Size");
        c.attribute("setOn", &FToy::setOn, &FToy::isOn, FArg{"on"}).title("On");
        c.attribute("setShape", &FToy::setShape, &FToy::getShape, FArg{"shape"})
            .title("Shape")
            .category("Looks", 2.0);
        c.attribute("setFriend", &FToy::setFriend, &FToy::getFriend, FArg{"other"}).title("Friend");
        c.attribute("setSecret", &FToy::setSecret, &FToy::getSecret, FArg{"text"}).hidden();
        c.member("poke", &FToy::poke).menu("Poke it", 1, ":/start");
    }

private:
    std::string mText;
    double mSize = 1;
    bool mOn = false;
    Shape mShape = Shape::Round;
    FExpr<FToy> mFriend;
    int mPokes = 0;
};
F_CLASS_IMPL(FToy)
#endif
