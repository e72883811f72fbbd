// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTFILTER_H
#define FGENINTFILTER_H

#include <QtGlobal>
#include <array>
#include <functional>
#include <string>
#include <vector>

/// Finds many texts at once in ASCII, ignoring case, at about the speed of memory.
///
/// Of each text a window of up to four characters is looked for, the rarest one by a sample of what
/// is searched; 32 places are tested at a time with sets of half bytes, in eight groups of windows.
/// How well that sifts depends on the text, so the work behind it is counted: a caller goes over to
/// FGenIntAutomaton when it gets out of hand.
class FGenIntFilter
{
public:
    static constexpr int kWindow = 4;

    /// Counts what is frequent in the searched text.
    class Sample
    {
    public:
        Sample(const uchar *text, qint64 from, qint64 to);
        /// How often a window was seen, and how often any with other digits in their places.
        struct Cost
        {
            quint32 exact, blurred;
        };
        Cost cost(const char *window, int length) const;

    private:
        std::vector<quint16> mCounts, mBlurred;
    };

    /// True if this processor can do it.
    static bool isSupported();

    /// \p patterns are folded, ASCII, not empty.
    FGenIntFilter(const std::vector<std::string> &patterns, const Sample &sample);

    /// True if no pattern is shorter than a window: a byte beyond ASCII is a place without a hit.
    bool takesAnyBytes() const { return mShort.empty(); }
    /// Calls \p hit with pattern and position for all that lies wholly in the stretch, which holds
    /// ASCII only unless takesAnyBytes(). \p work holds how many comparisons it may take and is
    /// told how many it took; false if it gave up at that.
    bool scan(const uchar *text, qint64 from, qint64 to, qint64 *work,
              const std::function<void(size_t, qint64)> &hit) const;

private:
    /// A pattern that a window serves for.
    struct Use
    {
        size_t pattern;
        qint64 windowAt; ///< where in the pattern the window stands
        qint64 checkAt;  ///< and where the characters that tell the pattern from the others
        quint32 checkKey;
    };
    struct Window
    {
        quint32 key = 0;  ///< its folded characters
        quint32 care = 0; ///< bits of the key that count; fewer for short patterns
        int length = 0;
        std::vector<Use> patterns;
    };
    struct Slot
    {
        quint32 key = 0;
        int window = -1;
    };
    void chooseWindows(const Sample &sample);
    void fillMasks();
    void fillTable();
    qint64 verify(const uchar *text, qint64 at, qint64 from, qint64 to,
                  const std::function<void(size_t, qint64)> &hit) const;
    qint64 compare(const Window &window, const uchar *text, qint64 at, qint64 from, qint64 to,
                   const std::function<void(size_t, qint64)> &hit) const;

    std::vector<std::string> mPatterns;
    std::vector<Window> mWindows;
    std::vector<int> mShort;  ///< windows of less than full length
    std::vector<Slot> mTable; ///< windows of full length by hash of their key
    alignas(32) std::array<std::array<std::array<uchar, 32>, 2>, kWindow> mMasks = {};
};
#endif
