#include "app/windows/ProgressSheet.h"

#include "app/windows/TextSize.h"
#include "ui_ProgressSheet.h"

#include <QPushButton>
#include <QTimer>

using namespace Qt::StringLiterals;

ProgressSheet::ProgressSheet(QWidget* window, std::chrono::milliseconds patience)
    : QDialog(window, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint)
    , m_ui(std::make_unique<Ui::ProgressSheet>())
    , m_timer(std::make_unique<QTimer>())
{
    constexpr int textWidth = 54; // average characters of a line
    m_ui->setupUi(this);
    setWindowModality(Qt::WindowModal);
    m_ui->informationsTextField->setFont(scaledFont(font(), 1.2, QFont::Bold));
    m_ui->patienceLabel->setFixedWidth(textWidth * fontMetrics().averageCharWidth());
    // The final width from the start, so that the sheet stays centred on its window.
    m_ui->informationsTextField->setMinimumWidth(m_ui->patienceLabel->width());
    hidePatience();
    connect(m_ui->cancelButton, &QPushButton::clicked, this, &ProgressSheet::cancelRequested);

    m_timer->setSingleShot(true);
    m_timer->setInterval(patience);
    connect(m_timer.get(), &QTimer::timeout, this, &ProgressSheet::askForPatience);
}

ProgressSheet::~ProgressSheet() = default;

void ProgressSheet::begin(const QString& message)
{
    m_ui->informationsTextField->setText(message);
    if (isVisible())
        return;
    hidePatience();
    m_ui->progressIndicator->startAnimation();
    m_timer->start();
    open();
}

void ProgressSheet::end()
{
    m_timer->stop();
    if (isVisible())
        done(1);
    m_ui->progressIndicator->stopAnimation();
}

void ProgressSheet::reject()
{
    if (m_ui->cancelButton->isVisible())
        Q_EMIT cancelRequested();
}

void ProgressSheet::askForPatience()
{
    m_ui->patienceLabel->setText(u"Le lecteur tarde à répondre… Vérifiez que la carte est bien insérée\u00A0: "
                                 "la lecture se poursuit."_s);
    m_ui->patienceLabel->show();
    // Screen readers read this when the button gets the focus.
    m_ui->cancelButton->setAccessibleDescription(m_ui->patienceLabel->text());
    m_ui->cancelButton->show();
    m_ui->cancelButton->setFocus();
}

void ProgressSheet::hidePatience()
{
    m_ui->patienceLabel->hide();
    m_ui->cancelButton->hide();
}

QLabel* ProgressSheet::informationsTextField() const
{
    return m_ui->informationsTextField;
}

QLabel* ProgressSheet::patienceLabel() const
{
    return m_ui->patienceLabel;
}

ProgressIndicator* ProgressSheet::progressIndicator() const
{
    return m_ui->progressIndicator;
}

QPushButton* ProgressSheet::cancelButton() const
{
    return m_ui->cancelButton;
}
