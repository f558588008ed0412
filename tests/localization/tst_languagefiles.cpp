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

// The loader reads at most this many characters of a value.
constexpr int MaxValueLength = 254;

struct Entry
{
    int line = 0;
    QString key;
    QString value;
};

struct LanguageFile
{
    QString path;
    QList<Entry> entries;
    QMap<QString, QString> values;
    QStringList problems; // lines the loader would misread
};

LanguageFile parseLanguageFile(const QString &path)
{
    LanguageFile lang;
    lang.path = path;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        lang.problems << QStringLiteral("cannot open %1").arg(path);
        return lang;
    }
    QStringDecoder decode(QStringDecoder::Utf8);
    const QString text = decode(file.readAll());
    if (decode.hasError())
        lang.problems << QStringLiteral("not valid UTF-8");

    const QStringList lines = text.split(u'\n');
    for (int i = 0; i < lines.size(); ++i) {
        QString line = lines.at(i);
        if (line.endsWith(u'\r'))
            line.chop(1);
        const QString trimmed = line.trimmed();
        if (trimmed.isEmpty() || trimmed.startsWith(u';'))
            continue;
        if (trimmed.startsWith(u'[')) {
            // Only the section with the empty name is read; whatever follows a named header is
            // lost.
            if (trimmed != QStringLiteral("[]"))
                lang.problems
                    << QStringLiteral("line %1: section header %2").arg(i + 1).arg(trimmed);
            continue;
        }
        const qsizetype eq = line.indexOf(u'=');
        if (eq <= 0) {
            lang.problems << QStringLiteral("line %1: not key=value").arg(i + 1);
            continue;
        }
        Entry entry{i + 1, line.left(eq).trimmed(), line.mid(eq + 1)};
        lang.entries << entry;
        if (lang.values.contains(entry.key))
            lang.problems
                << QStringLiteral("line %1: key %2 occurs twice").arg(i + 1).arg(entry.key);
        else
            lang.values.insert(entry.key, entry.value);
    }
    return lang;
}

QSet<int> parameterNumbers(const QString &text)
{
    static const QRegularExpression marker(QStringLiteral("%(\\d+)"));
    QSet<int> numbers;
    for (const auto &match : marker.globalMatch(text))
        numbers.insert(match.captured(1).toInt());
    return numbers;
}

QString describe(const QSet<int> &numbers)
{
    QList<int> sorted(numbers.begin(), numbers.end());
    std::sort(sorted.begin(), sorted.end());
    QStringList parts;
    for (int n : sorted)
        parts << QStringLiteral("%") + QString::number(n);
    return parts.isEmpty() ? QStringLiteral("none") : parts.join(u' ');
}

bool isMessageKey(const QString &key)
{
    bool numeric = false;
    const int n = key.toInt(&numeric);
    // Control identifiers may carry a tool tip: the main window's 1000-9999 and the first 800
    // numbers of each dialog's block of 10000; everything else is a message.
    const bool control = (n >= 1000 && n <= 9999) || (n >= 10000 && n % 10000 < 800);
    return !numeric || !control;
}

// Every message the program shows, with the parameters its caller passes.
struct RequiredMessage
{
    const char *key;
    int parameters; // %1 .. %parameters must all occur, no other marker may
};

constexpr RequiredMessage RequiredMessages[] = {
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

    void readsCleanly_data();
    void readsCleanly();
    void valuesSurviveTheReader_data();
    void valuesSurviveTheReader();
    void sameKeysAsEnglish_data();
    void sameKeysAsEnglish();
    void requiredMessage_data();
    void requiredMessage();
    void sameParametersAsEnglish_data();
    void sameParametersAsEnglish();
    void gridHeadingsSplitIntoColumns_data();
    void gridHeadingsSplitIntoColumns();
    void profileFilterSplitsIntoPairs_data();
    void profileFilterSplitsIntoPairs();

private:
    void addFileRows();

    QMap<QString, LanguageFile> m_files; // by language name
};

void TestLanguageFiles::initTestCase()
{
    const QString source = qEnvironmentVariable("DUOMIR_SOURCE_DIR");
    QVERIFY2(!source.isEmpty(), "DUOMIR_SOURCE_DIR is not set");
    const QDir share(source + QStringLiteral("/share"));
    const QStringList names = share.entryList({QStringLiteral("*.lang")}, QDir::Files, QDir::Name);
    for (const QString &name : names)
        m_files.insert(name.chopped(5), parseLanguageFile(share.filePath(name)));
    QVERIFY2(m_files.contains(QStringLiteral("English")), "English.lang is missing");
    QVERIFY2(m_files.size() >= 2, "expected at least one translation beside English");
}

void TestLanguageFiles::addFileRows()
{
    QTest::addColumn<QString>("language");
    for (auto it = m_files.cbegin(); it != m_files.cend(); ++it)
        QTest::newRow(qPrintable(it.key())) << it.key();
}

void TestLanguageFiles::readsCleanly_data()
{
    addFileRows();
}

// Duplicate keys, lines without "=", named sections and broken UTF-8.
void TestLanguageFiles::readsCleanly()
{
    QFETCH(QString, language);
    const LanguageFile &lang = m_files[language];
    QVERIFY2(lang.problems.isEmpty(), qPrintable(lang.problems.join(u'\n')));
    QVERIFY(!lang.entries.isEmpty());
}

void TestLanguageFiles::valuesSurviveTheReader_data()
{
    addFileRows();
}

// The reader cuts long values, drops blanks around a value and a pair of quotes around it, and
// splits a value at "|" into text and tool tip: a message must not rely on any of these.
void TestLanguageFiles::valuesSurviveTheReader()
{
    QFETCH(QString, language);
    QStringList faults;
    for (const Entry &e : m_files[language].entries) {
        const QString where = QStringLiteral("line %1 (%2): ").arg(e.line).arg(e.key);
        if (e.value.size() > MaxValueLength)
            faults << where + QStringLiteral("%1 characters").arg(e.value.size());
        if (e.value.trimmed() != e.value)
            faults << where + QStringLiteral("blanks around the value");
        if (e.value.size() >= 2 && e.value.startsWith(u'"') && e.value.endsWith(u'"'))
            faults << where + QStringLiteral("quoted value");
        if (e.value.trimmed().isEmpty())
            faults << where + QStringLiteral("empty value");
        if (isMessageKey(e.key) && e.value.contains(u'|'))
            faults << where + QStringLiteral("\"|\" in a message");
        static const QRegularExpression badEscape(QStringLiteral("\\\\(?![rn])"));
        if (isMessageKey(e.key) && e.value.contains(badEscape))
            faults << where + QStringLiteral("backslash other than \\r or \\n");
    }
    QVERIFY2(faults.isEmpty(), qPrintable(faults.join(u'\n')));
}

void TestLanguageFiles::sameKeysAsEnglish_data()
{
    QTest::addColumn<QString>("language");
    for (const QString &name : m_files.keys()) {
        if (name != QStringLiteral("English"))
            QTest::newRow(qPrintable(name)) << name;
    }
}

void TestLanguageFiles::sameKeysAsEnglish()
{
    QFETCH(QString, language);
    const auto english = m_files.value(QStringLiteral("English")).values.keys();
    const auto other = m_files.value(language).values.keys();
    const QSet<QString> englishKeys(english.begin(), english.end());
    const QSet<QString> otherKeys(other.begin(), other.end());
    QStringList missing = (englishKeys - otherKeys).values();
    QStringList extra = (otherKeys - englishKeys).values();
    missing.sort();
    extra.sort();
    QVERIFY2(missing.isEmpty(), qPrintable(QStringLiteral("missing: ") + missing.join(u' ')));
    QVERIFY2(extra.isEmpty(), qPrintable(QStringLiteral("only here: ") + extra.join(u' ')));
}

void TestLanguageFiles::requiredMessage_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<QString>("key");
    QTest::addColumn<int>("parameters");
    for (const QString &name : m_files.keys()) {
        for (const RequiredMessage &m : RequiredMessages) {
            const QString key = QString::fromLatin1(m.key);
            QTest::addRow("%s/%s", qPrintable(name), m.key) << name << key << m.parameters;
        }
    }
}

// A missing marker drops the path the user needs to see; an extra one is shown literally.
void TestLanguageFiles::requiredMessage()
{
    QFETCH(QString, language);
    QFETCH(QString, key);
    QFETCH(int, parameters);
    const LanguageFile &lang = m_files[language];
    QVERIFY2(lang.values.contains(key), "key missing");
    QVERIFY(!lang.values.value(key).trimmed().isEmpty());
    QSet<int> expected;
    for (int n = 1; n <= parameters; ++n)
        expected.insert(n);
    const QSet<int> found = parameterNumbers(lang.values.value(key));
    QVERIFY2(
        found == expected,
        qPrintable(QStringLiteral("has %1, needs %2").arg(describe(found), describe(expected))));
}

void TestLanguageFiles::sameParametersAsEnglish_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<QString>("key");
    const LanguageFile english = m_files.value(QStringLiteral("English"));
    for (const QString &name : m_files.keys()) {
        if (name == QStringLiteral("English"))
            continue;
        for (const Entry &e : english.entries)
            QTest::addRow("%s/%s", qPrintable(name), qPrintable(e.key)) << name << e.key;
    }
}

// Covers every key, also the control captions that are not in the required list.
void TestLanguageFiles::sameParametersAsEnglish()
{
    QFETCH(QString, language);
    QFETCH(QString, key);
    const QMap<QString, QString> &other = m_files[language].values;
    if (!other.contains(key))
        QSKIP("key missing; reported by sameKeysAsEnglish");
    const QSet<int> english =
        parameterNumbers(m_files[QStringLiteral("English")].values.value(key));
    const QSet<int> translated = parameterNumbers(other.value(key));
    QVERIFY2(english == translated,
             qPrintable(QStringLiteral("English has %1, %2 has %3")
                            .arg(describe(english), language, describe(translated))));
}

void TestLanguageFiles::gridHeadingsSplitIntoColumns_data()
{
    addFileRows();
}

// The pair grid has seven columns; the switch columns carry the codes that profiles use too.
void TestLanguageFiles::gridHeadingsSplitIntoColumns()
{
    QFETCH(QString, language);
    const QString headings = m_files[language].values.value(QStringLiteral("115"));
    const QStringList columns = headings.split(QStringLiteral("%1"));
    QCOMPARE(columns.size(), 7);
    for (const QString &column : columns)
        QVERIFY2(!column.trimmed().isEmpty(), qPrintable(headings));
    QCOMPARE(columns.mid(2),
             QStringList({QStringLiteral("Su"), QStringLiteral("SD"), QStringLiteral("HD"),
                          QStringLiteral("SF"), QStringLiteral("HF")}));
}

void TestLanguageFiles::profileFilterSplitsIntoPairs_data()
{
    addFileRows();
}

// The file dialogs split the filter into description/pattern pairs; a description names its
// patterns in parentheses so that a Qt dialog can use it alone, and the first pair offers profiles.
void TestLanguageFiles::profileFilterSplitsIntoPairs()
{
    QFETCH(QString, language);
    const QString filter = m_files[language].values.value(QStringLiteral("720"));
    const QStringList parts = filter.split(QStringLiteral("%1"));
    QVERIFY2(parts.size() >= 2 && parts.size() % 2 == 0, qPrintable(filter));
    static const QRegularExpression named(QStringLiteral("^.+\\(([^()]+)\\)$"));
    for (qsizetype i = 0; i < parts.size(); i += 2) {
        const auto match = named.match(parts.at(i));
        QVERIFY2(match.hasMatch(), qPrintable(parts.at(i)));
        const QString inDescription = match.captured(1).split(u' ', Qt::SkipEmptyParts).join(u';');
        QCOMPARE(parts.at(i + 1), inDescription);
    }
    QCOMPARE(parts.at(1), QStringLiteral("*.dyp"));
}

QTEST_GUILESS_MAIN(TestLanguageFiles)
#include "tst_languagefiles.moc"
