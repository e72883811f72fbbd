// SPDX-License-Identifier: Apache-2.0
#ifndef FENUM_H
#define FENUM_H
#include "fbasictype.h"

/// The words of an enumeration.
class FEnumData
{
public:
    void add(unsigned value, const std::string &word) { mWords[value] = word; }
    /// The word of \p value, empty if there is none.
    std::string getValue(unsigned value) const
    {
        const auto found = mWords.find(value);
        return found == mWords.end() ? std::string() : found->second;
    }
    /// The value of \p word; 0 for a word that isn't known.
    unsigned getValue(const std::string &word) const
    {
        for (const auto &entry : mWords)
            if (entry.second == word)
                return entry.first;
        return 0;
    }
    /// The value of the one word that begins with \p text, ignoring case.
    unsigned getUniqueMatch(const std::string &text, bool *ok) const
    {
        unsigned match = 0, count = 0;
        for (const auto &entry : mWords) {
            if (equals(entry.second, text, false)) {
                *ok = true;
                return entry.first;
            }
            if (startsWith(entry.second, text, false)) {
                match = entry.first;
                ++count;
            }
        }
        *ok = count == 1;
        return *ok ? match : 0;
    }
    const std::map<unsigned, std::string> &words() const { return mWords; }

private:
    std::map<unsigned, std::string> mWords;
};

class FEnumBase : public FUnsigned
{
    F_CLASS(FEnumBase, FUnsigned)
public:
    explicit FEnumBase(unsigned value = 0)
        : FUnsigned(value)
    {
    }
    virtual const FEnumData *data() const { return nullptr; }
    std::string toString() const override
    {
        return data() ? data()->getValue(mValue) : FUnsigned::toString();
    }
};

template <class T>
struct FScriptType;
template <class T>
struct FScriptEnum;

/// A value of the enumeration \p T, which F_ENUM and F_ENUM_IMPL make known.
template <class T>
class FEnum : public FEnumBase
{
    F_CLASS(FEnum, FEnumBase)
public:
    static FEnumData mStrRep;
    explicit FEnum(T value = T())
        : FEnumBase(unsigned(value))
    {
        if (mInitPrototype)
            fillWords();
    }
    const FEnumData *data() const override { return &mStrRep; }
    std::shared_ptr<FObject> clone() const override { return f_make_shared<FEnum>(T(mValue)); }

private:
    static void fillWords();
};

/// Makes FEnum<T> known; stands in the header behind the enumeration.
#define F_ENUM(T)                                                                                  \
    template <>                                                                                    \
    FEnumData FEnum<T>::mStrRep;                                                                   \
    template <>                                                                                    \
    void FEnum<T>::fillWords();                                                                    \
    template <>                                                                                    \
    std::shared_ptr<FEnum<T>> FEnum<T>::mpNull;                                                    \
    template <>                                                                                    \
    unsigned FEnum<T>::mSystemFlag;                                                                \
    template <>                                                                                    \
    bool FEnum<T>::mCmdsInitialized;                                                               \
    template <>                                                                                    \
    bool FEnum<T>::mTypeDocuInitialized;                                                           \
    template <>                                                                                    \
    const FInitFObjectPrototype *FEnum<T>::mpFEnumInitializer;                                     \
    template <>                                                                                    \
    const FClassInfo &FEnum<T>::staticClass();                                                     \
    template <>                                                                                    \
    std::shared_ptr<FEnum<T>> FEnum<T>::initPrototype();                                           \
    template <>                                                                                    \
    struct FScriptType<T> : FScriptEnum<T>                                                         \
    {                                                                                              \
    };

/// Defines FEnum<T> in one source: its statics, and its words as {value, word} pairs.
#define F_ENUM_IMPL(T, ...)                                                                        \
    template <>                                                                                    \
    FEnumData FEnum<T>::mStrRep{};                                                                 \
    template <>                                                                                    \
    void FEnum<T>::fillWords()                                                                     \
    {                                                                                              \
        static const std::pair<T, const char *> words[] = {__VA_ARGS__};                           \
        for (const auto &word : words)                                                             \
            mStrRep.add(unsigned(word.first), word.second);                                        \
    }                                                                                              \
    template <>                                                                                    \
    std::shared_ptr<FEnum<T>> FEnum<T>::mpNull{};                                                  \
    template <>                                                                                    \
    unsigned FEnum<T>::mSystemFlag = 0;                                                            \
    template <>                                                                                    \
    bool FEnum<T>::mCmdsInitialized = false;                                                       \
    template <>                                                                                    \
    bool FEnum<T>::mTypeDocuInitialized = false;                                                   \
    template <>                                                                                    \
    const FClassInfo &FEnum<T>::staticClass()                                                      \
    {                                                                                              \
        static const FClassInfo info{                                                              \
            "FEnum<" #T ">",                                                                       \
            &FEnumBase::staticClass(),                                                             \
            [] { return std::shared_ptr<FObject>(FEnum<T>::initPrototype()); },                    \
            &FEnumBase::initCmds,                                                                  \
            &FEnum<T>::mCmdsInitialized,                                                           \
            &FEnum<T>::mTypeDocuInitialized};                                                      \
        return info;                                                                               \
    }                                                                                              \
    template <>                                                                                    \
    std::shared_ptr<FEnum<T>> FEnum<T>::initPrototype()                                            \
    {                                                                                              \
        return fInitPrototype<FEnum<T>>([] { return new FEnum<T>(); });                            \
    }                                                                                              \
    template <>                                                                                    \
    const FInitFObjectPrototype *FEnum<T>::mpFEnumInitializer =                                    \
        new FInitFObjectPrototype(&FEnum<T>::staticClass);
#endif
