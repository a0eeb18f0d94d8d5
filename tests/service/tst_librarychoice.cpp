#include "service/LibraryChoice.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

/// The behaviour of a test's library, and its calls.
struct Script
{
    QString name;
    std::optional<LibraryKind> kind; // the result of initialise(), except for a refused mode
    LibraryMode refused = LibraryMode::System;
    QList<LibraryMode> asked = {};
    CardReaderState state = CardReaderState::Empty;
};

class ScriptedLibrary final : public ReadingLibrary
{
public:
    explicit ScriptedLibrary(Script* script)
        : m_script(script)
    {
    }

    [[nodiscard]] std::optional<LibraryKind> initialise(LibraryMode mode) override
    {
        m_script->asked << mode;
        return mode == m_script->refused ? std::nullopt : m_script->kind;
    }
    [[nodiscard]] QStringList readers() override { return {m_script->name}; }
    [[nodiscard]] bool chooseReaders(const QString& vitaleReader, const QString&) override
    {
        return vitaleReader == m_script->name;
    }
    [[nodiscard]] QString informations() override { return m_script->name; }
    [[nodiscard]] std::expected<QString, ReadResult> readCard() override { return m_script->name; }
    [[nodiscard]] std::unique_ptr<ReaderWatch> watchReader(const ReaderReport& report) override
    {
        report(m_script->state);
        return nullptr;
    }

private:
    Script* m_script;
};

/// Both libraries, the installed one present or not, and the choice between them.
struct Subject
{
    explicit Subject(bool isInstalled)
        : installed{.name = u"installed"_s,
                    .kind = isInstalled ? std::optional(LibraryKind::System) : std::nullopt,
                    .refused = LibraryMode::Embedded}
    {
    }

    Script installed;
    Script embedded{.name = u"embedded"_s, .kind = LibraryKind::Embedded, .refused = LibraryMode::System};
    LibraryChoice choice{std::make_unique<ScriptedLibrary>(&installed), std::make_unique<ScriptedLibrary>(&embedded)};
};

} // namespace

class tst_LibraryChoice : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void theModeChoosesTheLibrary_data()
    {
        QTest::addColumn<LibraryMode>("mode");
        QTest::addColumn<bool>("isInstalled");
        QTest::addColumn<std::optional<LibraryKind>>("kind");
        const auto system = std::optional(LibraryKind::System);
        const auto embedded = std::optional(LibraryKind::Embedded);
        QTest::newRow("automatic, installed") << LibraryMode::Automatic << true << system;
        QTest::newRow("automatic, not installed") << LibraryMode::Automatic << false << embedded;
        QTest::newRow("system, installed") << LibraryMode::System << true << system;
        QTest::newRow("system, not installed") << LibraryMode::System << false << std::optional<LibraryKind>();
        QTest::newRow("embedded, installed") << LibraryMode::Embedded << true << embedded;
        QTest::newRow("embedded, not installed") << LibraryMode::Embedded << false << embedded;
    }

    void theModeChoosesTheLibrary()
    {
        QFETCH(LibraryMode, mode);
        QFETCH(bool, isInstalled);
        QFETCH(std::optional<LibraryKind>, kind);
        Subject subject(isInstalled);
        QCOMPARE(subject.choice.initialise(mode), kind);
        if (!kind)
            return;
        const QString expected = kind == LibraryKind::System ? u"installed"_s : u"embedded"_s;
        QCOMPARE(subject.choice.readers(), QStringList{expected});
        QVERIFY(subject.choice.chooseReaders(expected, expected));
        QCOMPARE(subject.choice.informations(), expected);
        QVERIFY(subject.choice.readCard() == expected);
    }

    void afterARefusedModeNoLibraryIsInUse()
    {
        Subject subject(false);
        QVERIFY(!subject.choice.initialise(LibraryMode::System).has_value());
        QCOMPARE(subject.choice.readers(), QStringList());
        QVERIFY(!subject.choice.chooseReaders(u"embedded"_s, u"embedded"_s));
        QVERIFY(subject.choice.readCard() == std::unexpected(ReadResult::Unusable));
        QVERIFY(subject.choice.informations().contains(u"<version>aucune</version>"_s));
        QVERIFY(subject.embedded.asked.isEmpty());
    }

    void theInstalledLibraryIsInitialisedWithTheModeThatExcludesIt()
    {
        Subject subject(true);
        QCOMPARE(subject.choice.initialise(LibraryMode::System), std::optional(LibraryKind::System));
        QCOMPARE(subject.choice.initialise(LibraryMode::Embedded), std::optional(LibraryKind::Embedded));
        QCOMPARE(subject.installed.asked, (QList{LibraryMode::System, LibraryMode::Embedded}));
        QCOMPARE(subject.choice.readers(), QStringList{u"embedded"_s});
    }

    void theReadersStateIsThatOfTheLibraryInUse()
    {
        Subject subject(true);
        subject.embedded.state = CardReaderState::Card;
        QList<CardReaderState> reports;
        const ReaderReport report = [&reports](CardReaderState state) { reports.append(state); };
        for (const LibraryMode mode : {LibraryMode::System, LibraryMode::Embedded}) {
            QVERIFY(subject.choice.initialise(mode).has_value());
            QVERIFY(!subject.choice.watchReader(report));
        }
        QCOMPARE(reports, (QList{CardReaderState::Empty, CardReaderState::Card}));
    }

    void beforeAnyModeTheServicesOwnLibraryIsInUse()
    {
        Subject subject(true);
        QCOMPARE(subject.choice.readers(), QStringList{u"embedded"_s});
        QVERIFY(subject.installed.asked.isEmpty());
    }
};

template class RunnableTests<tst_LibraryChoice, void>;
#include "tst_librarychoice.moc"
