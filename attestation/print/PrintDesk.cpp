#include "attestation/print/PrintDesk.h"

#include "attestation/page/PageOfCard.h"
#include "attestation/print/PrintOperation.h"
#include "prefs/settings/MVSettings.h"

#include <QDir>
#include <QStandardPaths>
#include <QWidget>

#include <utility>

using namespace Qt::StringLiterals;

PrintDesk::PrintDesk(UserDefaults& settings, SchemeLogos& logos, const PageFonts& fonts, QString printHelper)
    : m_settings(settings)
    , m_logos(logos)
    , m_fonts(fonts)
    , m_printHelper(std::move(printHelper))
{
    connect(this, &PrintDesk::sent, this, &PrintDesk::remember);
}

PrintDesk::~PrintDesk() = default;

void PrintDesk::setPermission(std::function<bool()> permission)
{
    m_permission = std::move(permission);
}

bool PrintDesk::mayPrint() const
{
    return !m_permission || m_permission();
}

void PrintDesk::setFileNaming(std::function<QString(const CardRecord&)> fileNaming)
{
    m_fileNaming = std::move(fileNaming);
}

QString PrintDesk::offeredFile(const CardRecord& record) const
{
    if (m_fileNaming)
        return m_fileNaming(record);
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    return (QDir(documents).exists() ? documents : QDir::homePath()) + u"/%1.pdf"_s.arg(attestationJobName);
}

void PrintDesk::remember(const QString& queue)
{
    MVSettings::setPreferencesWithStringValue(m_settings, Settings::lastPrinter, queue);
}

void PrintDesk::print(const CardRecord& record, AlertQueue& alerts, QWidget& window)
{
    if (isAsking()) {
        bringToFront();
        return;
    }
    PrintOperation::Preset preset;
    preset.queue = MVSettings::stringPreferencesForKey(m_settings, Settings::lastPrinter).value_or(QString());
    preset.isWithoutAsking = MVSettings::booleanPreferencesForKey(m_settings, Settings::printWithoutAsking);
    preset.file = offeredFile(record);
    // It deletes itself when it is done, and goes with the window otherwise.
    m_operation = new PrintOperation(pageOfCard(record, pageOptions(m_settings), m_logos), std::move(preset), m_fonts,
                                     m_printHelper, alerts, &window);
    connect(m_operation, &PrintOperation::sent, this, &PrintDesk::sent);
    connect(m_operation, &PrintOperation::saved, this, &PrintDesk::saved);
    m_operation->run();
}

bool PrintDesk::isAsking() const
{
    return m_operation && m_operation->isAsking();
}

void PrintDesk::bringToFront() const
{
    if (isAsking())
        m_operation->bringToFront();
}
