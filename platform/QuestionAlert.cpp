#include "platform/QuestionAlert.h"

#include <QApplication>
#include <QCheckBox>
#include <QFontDatabase>
#include <QMessageBox>
#include <QPushButton>

bool isApplicationActive()
{
    return QGuiApplication::applicationState() == Qt::ApplicationActive;
}

QuestionAnswer askQuestion(const QuestionAlert& alert, bool comesToTheFront)
{
    QMessageBox box(QMessageBox::Question, QGuiApplication::applicationDisplayName(), alert.title);
    box.setInformativeText(alert.text);
    QPushButton* accept = box.addButton(alert.acceptText, QMessageBox::AcceptRole);
    QPushButton* decline = box.addButton(alert.declineText, QMessageBox::RejectRole);
    box.setEscapeButton(decline);
    box.setDefaultButton(accept);
    auto* suppression = new QCheckBox(alert.suppressionText);
    suppression->setAttribute(Qt::WA_MacSmallSize);
    suppression->setFont(QFontDatabase::systemFont(QFontDatabase::SmallestReadableFont));
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
    box.exec();
}
