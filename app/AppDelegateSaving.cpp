// The controller and what is written to the disk: attestations, the copy for support, and the end of the application
// meanwhile. A slow disk holds up nothing: all of it is written aside.
#include "app/AppDelegate.h"
#include "app/cards/AttestationFiles.h"
#include "app/desktop/StatusItem.h"
#include "app/models/DebugCopy.h"
#include "app/windows/MainWindow.h"
#include "attestation/viewer/MVAttestationWindowController.h"
#include "card/PelmoraError.h"
#include "platform/files/FileWorker.h"
#include "platform/gui/SavingSheet.h"
#include "prefs/settings/MVSettings.h"
#include "support/MXLog.h"
#include "update/SUUpdater.h"

#include <QAction>
#include <QCoreApplication>
#include <QFileDialog>
#include <QTimer>

#include <chrono>

using namespace Qt::StringLiterals;

QString AppDelegate::attestationsFolder() const
{
    return MVSettings::stringPreferencesForKey(m_settings, Settings::attestationsFolder).value_or(QString());
}

bool AppDelegate::refuseWhileWriting()
{
    const bool isWriting = FileWorker::shared().isBusy();
    if (isWriting)
        refuse(u"Un enregistrement est en cours."_s);
    return isWriting;
}

void AppDelegate::save(const CardRecord& record)
{
    const AttestationDocument document =
        AttestationFiles(attestationsFolder(), pageOptions(m_settings), m_logos, m_fonts).document(record);
    writeAside([this, document]() -> std::function<void()> {
        return [this, saved = AttestationFiles::write(document)] { finishSave(saved); };
    });
}

void AppDelegate::finishSave(const std::expected<QString, SaveFailure>& saved)
{
    m_window.setSaveFailure(saved ? QString() : saved.error().panelText());
    if (!saved && m_leaving == Leaving::UnlessSaveFails)
        m_leaving = Leaving::No;
    if (!saved && saved.error().kind == SaveFailure::Kind::FolderUnusable) {
        alertUser();
        return;
    }
    if (!saved && saved.error().kind == SaveFailure::Kind::NoDocument) {
        presentError(PelmoraError::writeError());
        return;
    }

    // Said even of a file that could not be written: so it was decided for this window. The truth follows.
    addToRecents(saved ? *saved : saved.error().path);
    static_cast<void>(visibleWindow());
    const AlertText success{u"Enregistrement de l'attestation"_s, u"L'attestation a bien été enregistrée."_s};
    if (saved) {
        m_alerts.presentMessage(success.title, success.text);
        return;
    }
    // The path names the patient, so it stays out of the log.
    MXLog::logError("The attestation was not written: {}", saved.error().write.reason);
    m_alerts.presentMessageThenWarning(success, {u"L’attestation n’est pas enregistrée"_s, saved.error().alertText()});
}

void AppDelegate::saveXMLIfNeeded()
{
    if (!isDebugCopyWanted(m_settings, m_currentVitale))
        return;
    writeAside([record = *m_currentVitale, folder = attestationsFolder()]() -> std::function<void()> {
        writeDebugCopy(record, folder);
        return [] {};
    });
}

void AppDelegate::writeAside(const std::function<std::function<void()>()>& work)
{
    if (!m_savingSheet) {
        m_savingSheet = new SavingSheet(&m_window);
        // Leaving stays possible while a disk keeps silent.
        m_savingSheet->addAction(m_window.quitAction());
    }
    m_savingSheet->begin();
    FileWorker::shared().start(this, [this, work]() -> std::function<void()> {
        return [this, tell = work()] {
            if (!FileWorker::shared().isBusy())
                m_savingSheet->end();
            tell();
        };
    });
}

void AppDelegate::writingHasEnded()
{
    if (m_savingSheet)
        m_savingSheet->end();
    // It was about what has been written.
    m_window.setNotice(QString());
    if (m_leaving != Leaving::No)
        QCoreApplication::exit(0);
}

void AppDelegate::quit()
{
    if (m_leaving == Leaving::No)
        m_leaving = Leaving::UnlessSaveFails;
    endOnceWritten();
}

void AppDelegate::terminate()
{
    m_leaving = Leaving::InAnyCase;
    endOnceWritten();
}

void AppDelegate::endOnceWritten()
{
    // No window is asked: those that only iconify when they are closed would refuse.
    if (!FileWorker::shared().isBusy()) {
        QCoreApplication::exit(0);
        return;
    }
    if (m_savingSheet)
        m_savingSheet->announceLeaving();
    QTimer::singleShot(patienceAtTheEnd, this, [this] {
        if (m_leaving == Leaving::No)
            return;
        MXLog::logError("The disk does not answer: a file may not have been written.");
        QCoreApplication::exit(0);
    });
}
