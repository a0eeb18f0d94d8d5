#include "platform/gui/QuestionAlert.h"

#include <QApplication>
#include <QCheckBox>
#include <QFontInfo>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>

using namespace Qt::StringLiterals;

namespace {

// The small system font is 11 points where the usual one is 13.
constexpr qreal smallSize = 11.0 / 13.0;

QFont smallFont()
{
    QFont font = QApplication::font();
    font.setPointSizeF(QFontInfo(font).pointSizeF() * smallSize);
    return font;
}

void emboldenTitle(const QMessageBox& box)
{
    // QMessageBox gives its label this name for style sheets.
    auto* title = box.findChild<QLabel*>(u"qt_msgbox_label"_s);
    if (title == nullptr)
        return;
    QFont font = title->font();
    font.setBold(true);
    title->setFont(font);
}

} // namespace

bool isApplicationActive()
{
    return QGuiApplication::applicationState() == Qt::ApplicationActive;
}

QuestionAnswer askQuestion(const QuestionAlert& alert, bool comesToTheFront)
{
    QMessageBox box(QMessageBox::Question, QGuiApplication::applicationDisplayName(), alert.title);
    emboldenTitle(box);
    box.setTextFormat(Qt::PlainText);
    box.setInformativeText(alert.text);
    QPushButton* accept = box.addButton(alert.acceptText, QMessageBox::AcceptRole);
    QPushButton* decline = box.addButton(alert.declineText, QMessageBox::RejectRole);
    box.setDefaultButton(accept);
    box.setEscapeButton(decline);
    auto* suppression = new QCheckBox(alert.suppressionText);
    suppression->setAttribute(Qt::WA_MacSmallSize);
    suppression->setFont(smallFont());
    box.setCheckBox(suppression);
    if (comesToTheFront) {
        box.show();
        box.raise();
        box.activateWindow();
    }
    box.exec();
    return {box.clickedButton() == accept, suppression->isChecked()};
}

void showAlert(const QString& title)
{
    QMessageBox box(QMessageBox::Critical, QGuiApplication::applicationDisplayName(), title, QMessageBox::Ok);
    emboldenTitle(box);
    box.setTextFormat(Qt::PlainText);
    box.exec();
}
