#include "app/WritingDesk.h"

#include "app/windows/MainWindow.h"
#include "platform/gui/SavingSheet.h"
#include "support/MXLog.h"

#include <QAction>
#include <QCoreApplication>
#include <QTimer>

WritingDesk::WritingDesk(MainWindow& window)
    : m_window(window)
{
    connect(&FileWorker::shared(), &FileWorker::ended, this, &WritingDesk::finish);
}

WritingDesk::~WritingDesk()
{
    delete m_sheet;
}

void WritingDesk::write(FileWorker::Work work)
{
    if (!m_sheet) {
        m_sheet = new SavingSheet(&m_window);
        // Quitting stays possible during a slow write.
        m_sheet->addAction(m_window.quitAction());
    }
    m_sheet->begin();
    FileWorker::shared().start(this, [this, work = std::move(work)]() -> std::function<void()> {
        return [this, tell = work()] {
            if (!FileWorker::shared().isBusy())
                m_sheet->end();
            tell();
        };
    });
}

void WritingDesk::finish()
{
    if (m_sheet)
        m_sheet->end();
    Q_EMIT ended();
    if (m_leaving != Leaving::No)
        QCoreApplication::exit(0);
}

void WritingDesk::quit()
{
    if (m_leaving == Leaving::No)
        m_leaving = Leaving::UnlessSaveFails;
    endOnceWritten();
}

void WritingDesk::terminate()
{
    m_leaving = Leaving::InAnyCase;
    endOnceWritten();
}

void WritingDesk::stayAfterFailedSave()
{
    if (m_leaving == Leaving::UnlessSaveFails)
        m_leaving = Leaving::No;
}

void WritingDesk::endOnceWritten()
{
    // exit() does not ask windows, which would refuse when they only iconify.
    if (!FileWorker::shared().isBusy()) {
        QCoreApplication::exit(0);
        return;
    }
    if (m_sheet)
        m_sheet->announceLeaving();
    QTimer::singleShot(patienceAtTheEnd, this, [this] {
        if (m_leaving == Leaving::No)
            return;
        MXLog::logError("The disk does not answer: a file may not have been written.");
        QCoreApplication::exit(0);
    });
}
