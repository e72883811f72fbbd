// SPDX-License-Identifier: Apache-2.0
// The registry of script commands and the texts behind it.
#include "fcmd.h"
#include "fcmdmanager.h"
#include "fdocumentation.h"
#include "foperators.h"

#include <QFile>
#include <QtTest>
#include <set>

namespace {
std::string described(const FCommandInfo &info)
{
    std::string line = info.publicName() + "\n    " + info.receiverName() + "." + info.name + "(";
    for (size_t i = 0; i < info.args.size(); ++i) {
        line += (i ? ", " : "") + info.args[i].type + " " + info.args[i].name;
        if (info.args[i].hasDefault)
            line += " = " + info.args[i].defaultText;
    }
    line += ") : " + info.returns;
    if (!info.title.empty())
        line += ", title \"" + info.title + "\"";
    line += info.hidden ? ", hidden" : "";
    line += info.guiThread ? ", gui thread" : "";
    line += info.systemFlag ? ", system flag " + std::to_string(info.systemFlag) : "";
    return line;
}

QString listed(const std::set<std::string> &names)
{
    QString text;
    for (const std::string &name : names)
        text += '\n' + QString::fromStdString(name);
    return text;
}

std::set<std::string> without(const std::set<std::string> &all, const std::set<std::string> &some)
{
    std::set<std::string> rest;
    std::set_difference(all.begin(), all.end(), some.begin(), some.end(),
                        std::inserter(rest, rest.end()));
    return rest;
}
} // namespace

class TestRegistry : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { FObject::initPrototypes(); }
    void namesAreUnique();
    void everyKeyHasItsText();
    void translatorAnswersKeysOnly();
    void registryIsAsExpected();
};

void TestRegistry::namesAreUnique()
{
    std::set<std::string> classes, keys;
    for (const auto &info : FCmdManager::instance()->all()) {
        QVERIFY2(classes.insert(info->publicName()).second, info->publicName().c_str());
        QVERIFY2(keys.insert(info->documentationKey()).second, info->documentationKey().c_str());
    }
    QVERIFY(classes.size() > 50);
}

void TestRegistry::everyKeyHasItsText()
{
    const auto asked = FDocumentation::keys(), known = FDocumentation::documentedKeys();
    const std::set<std::string> wanted(asked.begin(), asked.end());
    const std::set<std::string> there(known.begin(), known.end());
    const QString missing = listed(without(wanted, there)), stray = listed(without(there, wanted));
    QVERIFY2(missing.isEmpty(), qPrintable("keys without a text:" + missing));
    QVERIFY2(stray.isEmpty(), qPrintable("texts without a key:" + stray));
    for (const std::string &key : wanted)
        QVERIFY2(FDocumentation::text(key).size() > 3, key.c_str());
}

void TestRegistry::translatorAnswersKeysOnly()
{
    FDocuTranslator translator;
    QVERIFY(!translator.translate("FObject", "!FParameter").isEmpty());
    QVERIFY(translator.translate("FObject", "!NoSuchClass").isEmpty());
    QVERIFY(!translator.translate("FObject", "!NoSuchClass").isNull());
    QVERIFY(translator.translate("FObject", "Cancel").isNull());
}

/// The expected file changes only together with what scripts may say: tests/update_expected.sh.
void TestRegistry::registryIsAsExpected()
{
    std::string found;
    for (const auto &info : FCmdManager::instance()->all())
        found += described(*info) + "\n";
    const QString path = F_TEST_DATA "/commands.txt";
    if (qEnvironmentVariableIsSet("F_UPDATE_EXPECTED")) {
        QFile file(path);
        QVERIFY(file.open(QFile::WriteOnly) && file.write(found.c_str()) > 0);
    }
    QFile file(path);
    QVERIFY(file.open(QFile::ReadOnly));
    const QList<QByteArray> expected = file.readAll().split('\n');
    const QList<QByteArray> lines = QByteArray::fromStdString(found).split('\n');
    for (int i = 0; i < std::max(lines.size(), expected.size()); ++i)
        QCOMPARE(QString(lines.value(i)), QString(expected.value(i)));
}

QTEST_GUILESS_MAIN(TestRegistry)
#include "tst_registry.moc"
