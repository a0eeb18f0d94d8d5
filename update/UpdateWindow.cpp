#include "update/UpdateWindow.h"

#include "ui_UpdateWindow.h"
#include "update/UpdateNotes.h"
#include "update/UpdateSession.h"
#include "update/client/UpdateWords.h"

#include <QLocale>
#include <QPushButton>
#include <QStyle>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;
using State = UpdateSession::State;

namespace {

enum Part : unsigned
{
    Notes = 1,
    Progress = 2,
    Skip = 4,
    Later = 8,
    Cancel = 16,
    Download = 32,
    Close = 64
};

// The content of the window in each state. In texts, %1 is the version found, %2 the current one.
struct Page
{
    State state = State::Idle;
    QStringView headline;
    QStringView detail;
    unsigned parts = 0;
};

constexpr std::array pages{
    Page{State::Idle, u"", u"", Close},
    Page{State::Checking, u"Recherche d’une mise à jour…", u"Vous utilisez la version %2.", Progress | Cancel},
    Page{State::UpToDate, u"Pelmora est à jour.", u"Vous utilisez la version %2, il n’y en a pas de plus récente.",
         Close},
    Page{State::Available, u"La version %1 de Pelmora est disponible.", u"Vous utilisez la version %2.",
         Notes | Skip | Later | Download},
    Page{State::NeedsNewerSystem, u"La version %1 de Pelmora ne convient pas à ce système.",
         u"Elle demande un système plus récent que celui de cet ordinateur. Vous pouvez continuer à utiliser la "
         u"version %2.",
         Close},
    Page{State::Downloading, u"Téléchargement de la version %1…", u"", Progress | Cancel},
    Page{State::Verifying, u"Vérification de la version %1…", u"La signature de l’éditeur est contrôlée.",
         Progress | Cancel},
    Page{State::Ready, u"La version %1 est prête à être installée.",
         u"Le paquet est signé par l’éditeur de Pelmora. Il vient d’être ouvert avec le programme d’installation de "
         u"votre bureau\u202F: suivez ses indications.",
         Close},
    Page{State::Failed, updateFailedText, u"", Close},
};

// Instead of the headline of failures: nothing has failed.
constexpr QStringView packagedHeadline{u"Pelmora se met à jour avec votre système."};

constexpr QStringView notTaken{
    u"Le paquet est signé par l’éditeur de Pelmora, mais votre bureau n’a pas de programme pour l’ouvrir. Il se trouve "
    u"ici\u202F: %1"};

// Headline size relative to the normal text.
constexpr double headlineScale = 1.25;
constexpr int widthAtFirst = 72; // average characters

const Page& pageOf(State state)
{
    const auto* const page = std::ranges::find(pages, state, &Page::state);
    return page == pages.end() ? pages.front() : *page;
}

// With a no-break space before the unit.
QString sizeText(qint64 bytes)
{
    return QLocale(QLocale::French, QLocale::France)
        .formattedDataSize(bytes, 1, QLocale::DataSizeSIFormat)
        .replace(u' ', QChar::Nbsp);
}

} // namespace

UpdateWindow::UpdateWindow(UpdateSession& session)
    : m_session(session)
    , m_ui(std::make_unique<Ui::UpdateWindow>())
{
    m_ui->setupUi(this);
    QFont font = m_ui->headlineLabel->font();
    font.setBold(true);
    font.setPointSizeF(font.pointSizeF() * headlineScale);
    m_ui->headlineLabel->setFont(font);
    connect(&session, &UpdateSession::stateChanged, this, &UpdateWindow::updateUI);
    connect(&session, &UpdateSession::progressed, this, &UpdateWindow::showProgress);
    connect(m_ui->downloadButton, &QPushButton::clicked, &session, &UpdateSession::download);
    connect(m_ui->cancelButton, &QPushButton::clicked, this, &UpdateWindow::cancel);
    connect(m_ui->laterButton, &QPushButton::clicked, this, &UpdateWindow::reject);
    connect(m_ui->closeButton, &QPushButton::clicked, this, &UpdateWindow::accept);
    connect(m_ui->skipButton, &QPushButton::clicked, this, [this] {
        Q_EMIT skipRequested();
        reject();
    });
    updateUI();
}

UpdateWindow::~UpdateWindow() = default;

void UpdateWindow::setTakenByDesktop(bool isTaken)
{
    m_isTaken = isTaken;
    updateUI();
}

void UpdateWindow::updateUI()
{
    const Page& page = pageOf(m_session.state());
    m_ui->headlineLabel->setText(headline());
    m_ui->detailLabel->setText(detail());
    m_ui->notesTextEdit->setPlainText(plainNotes(m_session.item().notes, m_session.item().notesMayBeHtml));

    const bool hasNotes = !m_ui->notesTextEdit->document()->isEmpty();
    m_ui->notesTextEdit->setVisible((page.parts & Notes) != 0 && hasNotes);
    const std::array parts{
        std::pair<QWidget*, unsigned>{m_ui->progressBar, Progress},
        std::pair<QWidget*, unsigned>{m_ui->skipButton, Skip},
        std::pair<QWidget*, unsigned>{m_ui->laterButton, Later},
        std::pair<QWidget*, unsigned>{m_ui->cancelButton, Cancel},
        std::pair<QWidget*, unsigned>{m_ui->downloadButton, Download},
        std::pair<QWidget*, unsigned>{m_ui->closeButton, Close},
    };
    for (const auto& [widget, part] : parts)
        widget->setVisible((page.parts & part) != 0);
    QPushButton* usual = (page.parts & Download) != 0 ? m_ui->downloadButton : m_ui->closeButton;
    usual->setDefault(true);
    if (usual->isVisibleTo(this))
        usual->setFocus();
    // A busy indicator: the duration is unknown.
    m_ui->progressBar->setRange(0, 0);
    if (m_session.state() == State::Downloading)
        showProgress(0);
    fitHeight();
}

// Fits the height to the page. The width, which the user may have changed, is kept.
void UpdateWindow::fitHeight()
{
    const int usual = widthAtFirst * fontMetrics().averageCharWidth();
    const int width = std::max(isVisible() ? this->width() : usual, layout()->totalMinimumSize().width());
    resize(width, layout()->totalHeightForWidth(width));
}

void UpdateWindow::showProgress(qint64 received)
{
    constexpr int steps = 1000;
    const qint64 length = m_session.item().length;
    m_ui->progressBar->setRange(0, steps);
    m_ui->progressBar->setValue(static_cast<int>(received * steps / std::max<qint64>(length, 1)));
    m_ui->detailLabel->setText(u"%1 sur %2"_s.arg(sizeText(received), sizeText(length)));
}

void UpdateWindow::cancel()
{
    if (m_session.state() == State::Checking)
        reject();
    else
        m_session.cancelDownload();
}

QString UpdateWindow::headline() const
{
    if (m_session.state() == State::Failed && m_session.failure() == UpdateFailure::Packaged)
        return packagedHeadline.toString();
    return pageOf(m_session.state()).headline.toString().replace("%1"_L1, versionName());
}

QString UpdateWindow::detail() const
{
    if (m_session.state() == State::Failed)
        return textOf(m_session.failure()).toString();
    if (m_session.state() == State::Ready && !m_isTaken)
        return notTaken.toString().replace("%1"_L1, m_session.packagePath());
    return pageOf(m_session.state()).detail.toString().replace("%2"_L1, m_session.configuration().shortVersion);
}

// The version for users; with the internal version if both versions have the same name.
QString UpdateWindow::versionName() const
{
    const UpdateItem& item = m_session.item();
    const QString name = shortLine(item.shortVersion);
    return name == m_session.configuration().shortVersion ? u"%1 (%2)"_s.arg(name, item.version) : name;
}
