#include <QDir>
#include <QFile>
#include <QMap>
#include <QSet>
#include <QStringDecoder>
#include <QTest>
#include <QXmlStreamReader>

// The help key opens Help/<language>/<page> for whichever language the user picked, so every
// language file needs its own, complete set of pages, and links between them must land.

namespace {

const QStringList &helpPages()
{
    static const QStringList pages = {QStringLiteral("Main.htm"), QStringLiteral("Dirs.htm"),
                                      QStringLiteral("Options.htm"),
                                      QStringLiteral("Shortcut.htm")};
    return pages;
}

struct Page
{
    bool found = false;
    QString error; // empty when the page reads as well-formed markup
    QString title;
    int headings = 0; // h1 elements
    QStringList ids;  // in document order
    QStringList links;
};

// The pages are kept well-formed (every element closed, no named entities) so that a plain
// XML reader can check them; browsers read them as ordinary HTML.
Page readPage(const QString &path)
{
    Page page;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return page;
    page.found = true;
    const QByteArray bytes = file.readAll();
    QStringDecoder decode(QStringDecoder::Utf8);
    const QString text = decode(bytes);
    if (decode.hasError()) {
        page.error = QStringLiteral("not valid UTF-8");
        return page;
    }
    QXmlStreamReader xml(text);
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        const auto attributes = xml.attributes();
        if (attributes.hasAttribute(QStringLiteral("id")))
            page.ids << attributes.value(QStringLiteral("id")).toString();
        if (xml.name() == u"a" && attributes.hasAttribute(QStringLiteral("href")))
            page.links << attributes.value(QStringLiteral("href")).toString();
        else if (xml.name() == u"h1")
            ++page.headings;
        else if (xml.name() == u"title")
            page.title = xml.readElementText().trimmed();
    }
    if (xml.hasError())
        page.error = QStringLiteral("line %1: %2").arg(xml.lineNumber()).arg(xml.errorString());
    return page;
}

} // namespace

class TestHelpPages : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void page_data();
    void page();

private:
    Page read(const QString &language, const QString &name);

    QDir m_help;
    QStringList m_languages;
    QMap<QString, Page> m_cache;
};

void TestHelpPages::initTestCase()
{
    const QString source = qEnvironmentVariable("DUOMIR_SOURCE_DIR");
    QVERIFY2(!source.isEmpty(), "DUOMIR_SOURCE_DIR is not set");
    const QDir share(source + QStringLiteral("/share"));
    m_help = QDir(share.filePath(QStringLiteral("Help")));
    for (const QString &lang : share.entryList({QStringLiteral("*.lang")}, QDir::Files, QDir::Name))
        m_languages << lang.chopped(5);
    QVERIFY(m_languages.contains(QStringLiteral("English")));
}

Page TestHelpPages::read(const QString &language, const QString &name)
{
    const QString path = m_help.filePath(language + u'/' + name);
    auto it = m_cache.find(path);
    if (it == m_cache.end())
        it = m_cache.insert(path, readPage(path));
    return *it;
}

void TestHelpPages::page_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<QString>("name");
    for (const QString &lang : std::as_const(m_languages))
        for (const QString &name : helpPages())
            QTest::addRow("%s/%s", qPrintable(lang), qPrintable(name)) << lang << name;
}

// Links between pages stay inside the language's folder (the web is not checked), and
// translations keep the English section ids, so that links and the structure agree.
void TestHelpPages::page()
{
    QFETCH(QString, language);
    QFETCH(QString, name);
    const Page p = read(language, name);
    QVERIFY2(p.found, "page missing for a shipped language");
    QVERIFY2(p.error.isEmpty(), qPrintable(p.error));
    QVERIFY(!p.title.isEmpty());
    QCOMPARE(p.headings, 1);
    QCOMPARE(QSet<QString>(p.ids.begin(), p.ids.end()).size(), p.ids.size());
    QCOMPARE(p.ids, read(QStringLiteral("English"), name).ids);
    QStringList broken;
    for (const QString &link : p.links) {
        if (link.contains(QStringLiteral("://")) || link.startsWith(QStringLiteral("mailto:")))
            continue;
        const QString target = link.section(u'#', 0, 0);
        const QString anchor = link.section(u'#', 1);
        const Page t = target.isEmpty() ? p : read(language, target);
        if (!t.found || (!anchor.isEmpty() && !t.ids.contains(anchor)))
            broken << link;
    }
    QVERIFY2(broken.isEmpty(), qPrintable(QStringLiteral("broken: ") + broken.join(u' ')));
}

QTEST_GUILESS_MAIN(TestHelpPages)
#include "tst_helppages.moc"
