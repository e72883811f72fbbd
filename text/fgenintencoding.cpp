// SPDX-License-Identifier: Apache-2.0
#include "fgenintencoding.h"

#include <QTextCodec>
#include <algorithm>
#include <array>

namespace {
struct Form
{
    const char *name;
    QByteArray mark;
    int mib; ///< of the codec; 0 for the letters of Latin-1
};
const std::array<Form, 5> kForms{Form{"UTF-8-BOM", "\xef\xbb\xbf", 106},
                                 Form{"UTF-16LE", QByteArray("\xff\xfe", 2), 1014},
                                 Form{"UTF-16BE", QByteArray("\xfe\xff", 2), 1013},
                                 Form{"", "", 106}, Form{"ISO-8859-1", "", 0}};

const Form *formOf(const QString &encoding)
{
    const auto at = std::find_if(kForms.begin(), kForms.end(), [&](const Form &form) {
        return encoding == QLatin1String(form.name);
    });
    return at == kForms.end() ? nullptr : &*at;
}

QString decoded(const Form &form, const QByteArray &bytes)
{
    if (form.mib == 0)
        return QString::fromLatin1(bytes);
    QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
    return QTextCodec::codecForMib(form.mib)->toUnicode(bytes.constData(), bytes.size(), &state);
}
} // namespace

bool FGenIntEncoding::isKnown(const QString &encoding) { return formOf(encoding); }

bool FGenIntEncoding::decode(const QByteArray &bytes, QString *text, QString *encoding,
                             QString *why)
{
    for (const Form &form : kForms) {
        if (!bytes.startsWith(form.mark))
            continue;
        const QString found = decoded(form, bytes.mid(form.mark.size()));
        QByteArray back;
        int bad = 0;
        // Half a pair of surrogates comes back too, but projects can't keep it.
        const bool same = encode(found, QLatin1String(form.name), &back, &bad) && back == bytes &&
                          QString::fromUtf8(found.toUtf8()) == found;
        if (same && !found.contains(QChar(0))) {
            *text = found;
            *encoding = QLatin1String(form.name);
            return true;
        }
        if (!form.mark.isEmpty()) {
            *why =
                QStringLiteral("it has the mark of %1, but %2")
                    .arg(QLatin1String(form.name), same ? QStringLiteral("holds a zero character")
                                                        : QStringLiteral("isn't whole"));
            return false;
        }
    }
    *why = QStringLiteral("byte %1 is zero: it is no text").arg(bytes.indexOf('\0') + 1);
    return false;
}

bool FGenIntEncoding::encode(const QString &text, const QString &encoding, QByteArray *bytes,
                             int *bad)
{
    const Form *form = formOf(encoding);
    if (!form)
        return false;
    if (form->mib == 0) {
        const auto stranger =
            std::find_if(text.begin(), text.end(), [](QChar c) { return c.unicode() > 0xff; });
        *bad = int(stranger - text.begin());
        *bytes = text.toLatin1();
        return stranger == text.end();
    }
    QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
    *bytes = form->mark +
             QTextCodec::codecForMib(form->mib)->fromUnicode(text.constData(), text.size(), &state);
    return true;
}
