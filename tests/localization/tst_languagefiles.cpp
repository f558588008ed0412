#include <QDir>
#include <QFile>
#include <QMap>
#include <QRegularExpression>
#include <QStringDecoder>
#include <QTest>
#include <QXmlStreamReader>

// Checks the shipped language files and help pages as plain text, independently of the program's
// loader: a fault here (a missing key, a lost parameter, a value the loader would cut or split, a
// help page missing or a link going nowhere) otherwise shows up only as an empty or wrong message
// box or help window in front of a user.

namespace {

QString readUtf8(const QString &path, QStringList &problems)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        problems << u"cannot open "_qs + path;
    QStringDecoder decode(QStringDecoder::Utf8);
    const QString text = decode(file.readAll());
    if (decode.hasError())
        problems << path + u": not valid UTF-8"_qs;
    return text;
}

bool isMessageKey(const QString &key)
{
    bool numeric = false;
    const int n = key.toInt(&numeric);
    // Control identifiers may carry a tool tip: the main window's 1000-9999 and the first 800
    // numbers of each dialog's block of 10000; everything else is a message.
    return !numeric || !((n >= 1000 && n <= 9999) || (n >= 10000 && n % 10000 < 800));
}

// The reader reads only the section with the empty name, cuts values at 254 characters and splits
// a value at "|" into text and tool tip: a message must not rely on any of these. (It reports a
// repeated key itself, and drops blanks and quotes around a value.)
QMap<QString, QString> parseLanguageFile(const QString &path, QStringList &problems)
{
    QMap<QString, QString> values;
    static const QRegularExpression badEscape(u"\\\\(?![rn])"_qs);
    const QStringList lines = readUtf8(path, problems).split(u'\n');
    for (int i = 0; i < lines.size(); ++i) {
        const QString line = lines.at(i).endsWith(u'\r') ? lines.at(i).chopped(1) : lines.at(i);
        const QString trimmed = line.trimmed();
        const auto fault = [&](const QString &what) {
            problems << QStringLiteral("line %1: %2").arg(i + 1).arg(what);
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
        values.insert(key, value);
        if (value.trimmed().isEmpty())
            fault(key + u" is empty");
        if (value.size() > 254)
            fault(key + u" is too long");
        if (isMessageKey(key) && (value.contains(u'|') || value.contains(badEscape)))
            fault(key + u" holds \"|\" or a backslash other than \\r or \\n");
    }
    return values;
}

QList<int> parameterNumbers(const QString &text)
{
    static const QRegularExpression marker(u"%(\\d+)"_qs);
    QMap<int, bool> numbers; // sorted, each once
    for (const auto &match : marker.globalMatch(text))
        numbers.insert(match.captured(1).toInt(), true);
    return numbers.keys();
}

// Every message the program shows, with the number of parameters its caller passes after the
// colon (none without one): a missing marker drops the path the user needs to see; an extra one
// is shown literally.
const QString RequiredMessages =
    u"115:1 702:1 703:1 712:1 713:1 720:1 730 740 800 801 802 803 804 805:1 806:1 807:1 808:1 "
    u"809:1 810:1 811 850 851 852 853 854 10800 20800:1 20801 20802 20810 20820 20830 20840 "
    u"20850 20860 20870 20880 20890:1 20900:1 20910:1 20920:1 20930:1 20940:1 20950:1 20960:1 "
    u"50800 hint1 hint2 hint3 hint4 hint5 hint6 hint7 hint8 hint9 hint10 homepage email"_qs;

// The help key opens Help/<language>/<page> for whichever language the user picked.
const QStringList HelpPages = {u"Main.htm"_qs, u"Dirs.htm"_qs, u"Options.htm"_qs,
                               u"Shortcut.htm"_qs};

// The ids and the links of a page. The pages are kept well-formed (every element closed, no named
// entities) so that a plain XML reader can check them; browsers read them as ordinary HTML.
QPair<QStringList, QStringList> readPage(const QString &path, QStringList &problems)
{
    QPair<QStringList, QStringList> page;
    QXmlStreamReader xml(readUtf8(path, problems));
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        if (xml.attributes().hasAttribute(u"id"_qs))
            page.first << xml.attributes().value(u"id"_qs).toString();
        if (xml.name() == u"a" && xml.attributes().hasAttribute(u"href"_qs))
            page.second << xml.attributes().value(u"href"_qs).toString();
    }
    if (xml.hasError())
        problems << u"%1 line %2: %3"_qs.arg(path).arg(xml.lineNumber()).arg(xml.errorString());
    return page;
}

} // namespace

class TestLanguageFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        const QString source = qEnvironmentVariable("DUOMIR_SOURCE_DIR");
        QVERIFY2(!source.isEmpty(), "DUOMIR_SOURCE_DIR is not set");
        m_share = QDir(source + u"/share");
        for (const QString &name : m_share.entryList({u"*.lang"_qs}, QDir::Files, QDir::Name))
            m_languages << name.chopped(5);
        QVERIFY2(m_languages.contains(u"English"_qs), "English.lang is missing");
        QVERIFY2(m_languages.size() >= 2, "expected at least one translation beside English");
    }

    void languageFile_data()
    {
        QTest::addColumn<QString>("language");
        for (const QString &name : std::as_const(m_languages))
            QTest::newRow(qPrintable(name)) << name;
    }

    void languageFile()
    {
        QFETCH(QString, language);
        QStringList faults;
        const auto values = parseLanguageFile(m_share.filePath(language + u".lang"), faults);
        QStringList checkedInItsOwnRow;
        const auto english =
            parseLanguageFile(m_share.filePath(u"English.lang"_qs), checkedInItsOwnRow);
        auto hasParameters = [&](const QString &key, const QList<int> &expected) {
            const QList<int> found = parameterNumbers(values.value(key));
            if (found != expected)
                faults << u"%1: parameters %2, expected %3"_qs.arg(key, QDebug::toString(found),
                                                                   QDebug::toString(expected));
        };
        for (const QString &message : RequiredMessages.split(u' ')) {
            QList<int> expected;
            for (int n = 1; n <= message.section(u':', 1).toInt(); ++n)
                expected << n;
            hasParameters(message.section(u':', 0, 0), expected);
        }
        // Every key of English, also the control captions, with the same markers; nothing beyond.
        for (auto it = english.cbegin(); it != english.cend(); ++it) {
            if (!values.contains(it.key()))
                faults << it.key() + u" missing";
            else
                hasParameters(it.key(), parameterNumbers(it.value()));
        }
        for (const QString &key : values.keys())
            if (!english.contains(key))
                faults << key + u" only here";
        QVERIFY2(faults.isEmpty(), qPrintable(faults.join(u'\n')));

        // The pair grid has seven columns.
        QCOMPARE(values.value(u"115"_qs).split(u"%1"_qs).size(), 7);

        // The file dialogs split the filter into description/pattern pairs; a description names
        // its patterns in parentheses so that a Qt dialog can use it alone; the first pair offers
        // profiles.
        const QStringList parts = values.value(u"720"_qs).split(u"%1"_qs);
        QVERIFY2(parts.size() >= 2 && parts.size() % 2 == 0, qPrintable(parts.join(u'|')));
        static const QRegularExpression named(u"^.+\\(([^()]+)\\)$"_qs);
        for (qsizetype i = 0; i < parts.size(); i += 2) { // no parentheses: nothing captured
            const QString patterns = named.match(parts[i]).captured(1).simplified();
            QCOMPARE(parts[i + 1], QString(patterns).replace(u' ', u';'));
        }
        QCOMPARE(parts.at(1), u"*.dyp"_qs);
    }

    void helpPage_data()
    {
        QTest::addColumn<QString>("language");
        QTest::addColumn<QString>("name");
        for (const QString &language : std::as_const(m_languages))
            for (const QString &name : HelpPages)
                QTest::addRow("%s/%s", qPrintable(language), qPrintable(name)) << language << name;
    }

    // Every language has its own, complete set of pages; links between them stay inside the
    // language's folder (the web is not checked) and land.
    void helpPage()
    {
        QFETCH(QString, language);
        QFETCH(QString, name);
        const auto path = [&](const QString &page) {
            return m_share.filePath(u"Help/"_qs + language + u'/' + page);
        };
        QStringList faults;
        const auto [ids, links] = readPage(path(name), faults);
        for (const QString &link : links) {
            if (link.contains(u"://") || link.startsWith(u"mailto:"))
                continue;
            const QString target = link.section(u'#', 0, 0);
            const QString anchor = link.section(u'#', 1);
            const QStringList there = target.isEmpty() ? ids : readPage(path(target), faults).first;
            if (!anchor.isEmpty() && !there.contains(anchor))
                faults << u"broken link "_qs + link;
        }
        QVERIFY2(faults.isEmpty(), qPrintable(faults.join(u'\n')));
    }

private:
    QDir m_share;
    QStringList m_languages;
};

QTEST_GUILESS_MAIN(TestLanguageFiles)
#include "tst_languagefiles.moc"
