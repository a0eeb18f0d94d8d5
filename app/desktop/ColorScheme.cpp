#include "app/desktop/ColorScheme.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QToolTip>

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView portalPath{"/org/freedesktop/portal/desktop"};
constexpr QLatin1StringView settingsInterface{"org.freedesktop.portal.Settings"};
constexpr QLatin1StringView appearance{"org.freedesktop.appearance"};
constexpr QLatin1StringView colorScheme{"color-scheme"};
constexpr uint preferDark = 1;

QPalette darkPalette()
{
    const QColor window(45, 45, 45);
    const QColor base(30, 30, 30);
    const QColor text(238, 238, 238);
    const QColor dim(140, 140, 140);
    const QColor accent(53, 132, 228);
    QPalette palette(text, window, QColor(90, 90, 90), QColor(20, 20, 20), QColor(65, 65, 65), text, base);
    palette.setColor(QPalette::Button, QColor(58, 58, 58));
    palette.setColor(QPalette::AlternateBase, window);
    palette.setColor(QPalette::BrightText, Qt::white);
    palette.setColor(QPalette::Highlight, accent);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, QColor(120, 174, 237));
    palette.setColor(QPalette::LinkVisited, QColor(192, 160, 220));
    palette.setColor(QPalette::ToolTipBase, base);
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::PlaceholderText, dim);
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, dim);
    return palette;
}

bool isDark(const QPalette& palette)
{
    return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
}

/// The value inside of the bus's wrappers: Read() wraps it once more than a change does.
QVariant unwrapped(QVariant value)
{
    while (value.userType() == qMetaTypeId<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}

} // namespace

ColorScheme::ColorScheme(QObject* parent)
    : QObject(parent)
{
}

void ColorScheme::start()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    // From any sender: asking who the portal is would wait for the bus.
    bus.connect(QString(), portalPath, settingsInterface, u"SettingChanged"_s, this, SLOT(noteChange(QDBusMessage)));
    QDBusMessage question =
        QDBusMessage::createMethodCall(u"org.freedesktop.portal.Desktop"_s, portalPath, settingsInterface, u"Read"_s);
    question.setArguments({QString(appearance), QString(colorScheme)});
    auto* answer = new QDBusPendingCallWatcher(bus.asyncCall(question), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        const QDBusPendingReply<QDBusVariant> reply = *answer;
        // Without a portal there is no preference. A change that came first is newer.
        if (!reply.isError() && !m_hasChanged)
            follow(reply.value().variant());
        answer->deleteLater();
    });
}

void ColorScheme::noteChange(const QDBusMessage& change)
{
    const QVariantList arguments = change.arguments();
    if (arguments.size() != 3 || arguments[0] != QString(appearance) || arguments[1] != QString(colorScheme))
        return;
    m_hasChanged = true;
    follow(arguments[2]);
}

void ColorScheme::follow(const QVariant& value)
{
    const bool wantsDark = unwrapped(value).toUInt() == preferDark;
    if (wantsDark == m_usual.has_value() || (wantsDark && isDark(QApplication::palette())))
        return;
    if (wantsDark)
        m_usual = QApplication::palette();
    const QPalette palette = wantsDark ? darkPalette() : *m_usual;
    if (!wantsDark)
        m_usual.reset();
    QApplication::setPalette(palette);
    QToolTip::setPalette(palette);
}
