#include <QDir>
#include <QFile>
#include <QMap>
#include <QRegularExpression>
#include <QSet>
#include <QStringDecoder>
#include <QTest>

// Checks the shipped language files as plain text, independently of the program's loader: a fault
// here (a missing key, a lost parameter, a value the loader would cut or split) otherwise shows up
// only as an empty or wrong message box in front of a user.

namespace {

struct LanguageFile
{
    QMap<QString, QString> values;
    QStringList problems; // everything the loader would misread, one line each
};

bool isMessageKey(const QString &key)
{
    bool numeric = false;
    const int n = key.toInt(&numeric);
    // Control identifiers may carry a tool tip: the main window's 1000-9999 and the first 800
    // numbers of each dialog's block of 10000; everything else is a message.
    return !numeric || !((n >= 1000 && n <= 9999) || (n >= 10000 && n % 10000 < 800));
}

// The reader reads only the section with the empty name, keeps the first of two keys that differ
// only in case, cuts values at 254 characters, drops blanks and a pair of quotes around a value,
// and splits a value at "|" into text and tool tip: a message must not rely on any of these.
LanguageFile parseLanguageFile(const QString &path)
{
    LanguageFile lang;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {{}, {u"cannot open "_qs + path}};
    QStringDecoder decode(QStringDecoder::Utf8);
    const QString text = decode(file.readAll());
    const QStringList lines = text.split(u'\n');
    if (decode.hasError())
        lang.problems << u"not valid UTF-8"_qs;
    static const QRegularExpression badEscape(u"\\\\(?![rn])"_qs);
    QSet<QString> seen;
    for (int i = 0; i < lines.size(); ++i) {
        const QString line = lines.at(i).endsWith(u'\r') ? lines.at(i).chopped(1) : lines.at(i);
        const QString trimmed = line.trimmed();
        auto fault = [&](const QString &what) {
            lang.problems << QStringLiteral("line %1: %2").arg(i + 1).arg(what);
        };
        if (trimmed.isEmpty() || trimmed.startsWith(u';') || trimmed == u"[]")
            continue;
        const qsizetype eq = line.indexOf(u'=');
        if (trimmed.startsWith(u'[') || eq <= 0) {
            fault(u"not key=value: "_qs + trimmed);
            continue;
        }
        const QString key = line.left(eq).trimmed();
        const QString value = line.mid(eq + 1);
        if (seen.contains(key.toLower()))
            fault(key + u" occurs twice");
        seen.insert(key.toLower());
        lang.values.insert(key, value);
        if (value.size() > 254)
            fault(key + u" is too long");
        if (value.trimmed() != value || value.trimmed().isEmpty())
            fault(key + u" has blanks around it or is empty");
        if (value.size() >= 2 && value.startsWith(u'"') && value.endsWith(u'"'))
            fault(key + u" is quoted");
        if (isMessageKey(key) && (value.contains(u'|') || value.contains(badEscape)))
            fault(key + u" holds \"|\" or a backslash other than \\r or \\n");
    }
    return lang;
}

QList<int> parameterNumbers(const QString &text)
{
    static const QRegularExpression marker(u"%(\\d+)"_qs);
    QSet<int> numbers;
    for (const auto &match : marker.globalMatch(text))
        numbers.insert(match.captured(1).toInt());
    QList<int> sorted(numbers.begin(), numbers.end());
    std::sort(sorted.begin(), sorted.end());
    return sorted;
}

// Every message the program shows, with the number of parameters its caller passes: a missing
// marker drops the path the user needs to see; an extra one is shown literally.
constexpr std::pair<const char *, int> RequiredMessages[] = {
    {"115", 1},   {"702", 1},    {"703", 1},      {"712", 1},   {"713", 1},   {"720", 1},
    {"730", 0},   {"740", 0},    {"800", 0},      {"801", 0},   {"802", 0},   {"803", 0},
    {"804", 0},   {"805", 1},    {"806", 1},      {"807", 1},   {"808", 1},   {"809", 1},
    {"810", 1},   {"811", 0},    {"850", 0},      {"851", 0},   {"852", 0},   {"853", 0},
    {"854", 0},   {"10800", 0},  {"20800", 1},    {"20801", 0}, {"20802", 0}, {"20810", 0},
    {"20820", 0}, {"20830", 0},  {"20840", 0},    {"20850", 0}, {"20860", 0}, {"20870", 0},
    {"20880", 0}, {"20890", 1},  {"20900", 1},    {"20910", 1}, {"20920", 1}, {"20930", 1},
    {"20940", 1}, {"20950", 1},  {"20960", 1},    {"50800", 0}, {"hint1", 0}, {"hint2", 0},
    {"hint3", 0}, {"hint4", 0},  {"hint5", 0},    {"hint6", 0}, {"hint7", 0}, {"hint8", 0},
    {"hint9", 0}, {"hint10", 0}, {"homepage", 0}, {"email", 0},
};

} // namespace

class TestLanguageFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void languageFile_data();
    void languageFile();

private:
    QMap<QString, LanguageFile> m_files; // by language name
};

void TestLanguageFiles::initTestCase()
{
    const QString source = qEnvironmentVariable("DUOMIR_SOURCE_DIR");
    QVERIFY2(!source.isEmpty(), "DUOMIR_SOURCE_DIR is not set");
    const QDir share(source + u"/share");
    for (const QString &name : share.entryList({u"*.lang"_qs}, QDir::Files, QDir::Name))
        m_files.insert(name.chopped(5), parseLanguageFile(share.filePath(name)));
    QVERIFY2(m_files.contains(u"English"_qs), "English.lang is missing");
    QVERIFY2(m_files.size() >= 2, "expected at least one translation beside English");
}

void TestLanguageFiles::languageFile_data()
{
    QTest::addColumn<QString>("language");
    for (const QString &name : m_files.keys())
        QTest::newRow(qPrintable(name)) << name;
}

void TestLanguageFiles::languageFile()
{
    QFETCH(QString, language);
    const LanguageFile &lang = m_files[language];
    const QMap<QString, QString> &english = m_files[u"English"_qs].values;
    QStringList faults = lang.problems;
    auto hasParameters = [&](const QString &key, const QList<int> &expected) {
        const QList<int> found = parameterNumbers(lang.values.value(key));
        if (found != expected)
            faults << QStringLiteral("%1: parameters %2, expected %3")
                          .arg(key, QDebug::toString(found), QDebug::toString(expected));
    };
    for (const auto &[key, count] : RequiredMessages) {
        QList<int> expected;
        for (int n = 1; n <= count; ++n)
            expected << n;
        hasParameters(QString::fromLatin1(key), expected);
    }
    // Every key of English, also the control captions, with the same markers; nothing beyond.
    for (auto it = english.cbegin(); it != english.cend(); ++it) {
        if (!lang.values.contains(it.key()))
            faults << it.key() + u" missing";
        else
            hasParameters(it.key(), parameterNumbers(it.value()));
    }
    for (const QString &key : lang.values.keys())
        if (!english.contains(key))
            faults << key + u" only here";
    QVERIFY2(faults.isEmpty(), qPrintable(faults.join(u'\n')));

    // The pair grid has seven columns; the switch columns carry the codes that profiles use too.
    const QStringList columns = lang.values.value(u"115"_qs).split(u"%1"_qs);
    QCOMPARE(columns.size(), 7);
    QVERIFY(!columns.at(0).trimmed().isEmpty() && !columns.at(1).trimmed().isEmpty());
    QCOMPARE(columns.mid(2), QStringList({u"Su"_qs, u"SD"_qs, u"HD"_qs, u"SF"_qs, u"HF"_qs}));

    // The file dialogs split the filter into description/pattern pairs; a description names its
    // patterns in parentheses so that a Qt dialog can use it alone; the first pair offers profiles.
    const QString filter = lang.values.value(u"720"_qs);
    const QStringList parts = filter.split(u"%1"_qs);
    QVERIFY2(parts.size() >= 2 && parts.size() % 2 == 0, qPrintable(filter));
    static const QRegularExpression named(u"^.+\\(([^()]+)\\)$"_qs);
    for (qsizetype i = 0; i < parts.size(); i += 2) {
        const auto match = named.match(parts.at(i));
        QVERIFY2(match.hasMatch(), qPrintable(parts.at(i)));
        QCOMPARE(parts.at(i + 1), match.captured(1).split(u' ', Qt::SkipEmptyParts).join(u';'));
    }
    QCOMPARE(parts.at(1), u"*.dyp"_qs);
}

QTEST_GUILESS_MAIN(TestLanguageFiles)
#include "tst_languagefiles.moc"
