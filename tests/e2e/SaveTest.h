#pragma once

#include "tests/common/Files.h"
#include "tests/common/TestCase.h"
#include "tests/e2e/Run.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace SaveTests {

using namespace Qt::StringLiterals;

inline QString card(const QString& lastName, const QString& firstName)
{
    return uR"(<?xml version="1.0" encoding="UTF-8"?>
<T_AsnDonneesVitale><listeBenef><T_AsnBeneficiaire>
<ident>%1%2<nir>185057800608491</nir></ident>
<amo><qualBenef>0</qualBenef><codeRegime>01</codeRegime><caisse>751</caisse></amo>
</T_AsnBeneficiaire></listeBenef></T_AsnDonneesVitale>)"_s.arg(lastName, firstName);
}

inline QString cardOf(const QString& lastName, const QString& firstName)
{
    return card(u"<nomUsuel>%1</nomUsuel>"_s.arg(lastName.toHtmlEscaped()),
                u"<prenomUsuel>%1</prenomUsuel>"_s.arg(firstName.toHtmlEscaped()));
}

inline QStringList entries(const QString& folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

/// Saving attestations from the command line, without a display.
class SaveTest : public TestCase
{
    Q_OBJECT

protected:
    QString path(const QString& name) const { return m_home->filePath(name); }
    QString folder() const { return path(u"attestations"_s); }

    QString cardFile(const QString& content)
    {
        const QString name = path(u"card-%1.xml"_s.arg(m_count++));
        return writeFile(name, content.toUtf8()) ? name : QString();
    }

    // The card of a person with that name.
    QString zoe() { return cardFile(cardOf(u"SPECIMEN"_s, u"Zoé"_s)); }

    RunResult pelmora(const QStringList& arguments, const QStringList& wrapper = {}) const
    {
        return runPelmora(m_home->path(), arguments, wrapper);
    }

    // Saves card files in the folder.
    RunResult save(const QStringList& files, const QStringList& wrapper = {}) const
    {
        return pelmora(QStringList{u"--save"_s, folder()} + files, wrapper);
    }

    std::unique_ptr<QTemporaryDir> m_home;
    int m_count = 0;

private Q_SLOTS:
    void init()
    {
        m_home = std::make_unique<QTemporaryDir>();
        QVERIFY(m_home->isValid());
    }
};

} // namespace SaveTests
