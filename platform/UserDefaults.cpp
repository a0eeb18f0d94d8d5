#include "platform/UserDefaults.h"

#include "platform/IntegerValue.h"
#include "platform/PrivateFolder.h"

#include <QDebug>
#include <QEvent>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QSettings>
#include <QStandardPaths>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {
// An INI file gives a list of one text back as a text, and an empty list as nothing: arrays are written item by item.
constexpr QLatin1StringView arrayItem{"value"};
constexpr QLatin1StringView arraySize{"/size"};

// QSettings keeps in memory what it cannot write, and below this device nothing can be.
constexpr QLatin1StringView memoryPath{"/dev/null/settings"};

constexpr mode_t others = S_IRWXG | S_IRWXO;

/// Takes the rights of others away from what is open, where it is this user's own.
void makePrivate(int file, const struct stat& status)
{
    if (status.st_uid == geteuid() && (status.st_mode & others) != 0)
        fchmod(file, status.st_mode & mode_t{07777} & ~others);
}

enum class Missing
{
    StaysMissing,
    IsMade
};

/// Makes a settings file its owner's alone. False when what is there is no plain file; nothing then waits for it.
bool makeFilePrivate(const QString& filePath, Missing missing)
{
    const int whenMissing = missing == Missing::IsMade ? O_CREAT : 0;
    const int file = open(QFile::encodeName(filePath).constData(),
                          O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC | whenMissing, S_IRUSR | S_IWUSR);
    // Absent, or not for us to read: QSettings tells one from the other.
    if (file < 0)
        return true;
    struct stat status = {};
    const bool isPlain = fstat(file, &status) == 0 && S_ISREG(status.st_mode);
    if (isPlain)
        makePrivate(file, status);
    close(file);
    return isPlain;
}

/// Other users can neither list nor open the program's folder, nor what the user has put there.
void makeFolderPrivate(const QString& folderPath)
{
    const int folder = open(QFile::encodeName(folderPath).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0)
        return;
    struct stat status = {};
    if (fstat(folder, &status) == 0)
        makePrivate(folder, status);
    close(folder);
}

/// Where the store is: in its file, or in memory.
QString storePath(const QString& filePath)
{
    if (filePath == UserDefaults::standardFilePath())
        makeFolderPrivate(QFileInfo(filePath).path());
    if (makeFilePrivate(filePath, Missing::StaysMissing))
        return filePath;
    qWarning("The settings file is not a plain file: it is not read, and nothing is written to it");
    return memoryPath;
}

} // namespace

/// QSettings replaces its file at each write and gives the new one the rights of the old one; a first one has those
/// that the umask leaves. So before each write a private file is there.
class UserDefaults::Store final : public QSettings
{
public:
    explicit Store(const QString& filePath)
        : QSettings(filePath, QSettings::IniFormat)
    {
    }
    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;
    // The base's destructor writes.
    ~Store() override { prepareWriting(); }

    void synchronize()
    {
        prepareWriting();
        sync();
        // What another store of this process had set to the same file was written with it.
        makeFilePrivate(fileName(), Missing::StaysMissing);
    }

    void setChanged() { m_isChanged = true; }

protected:
    // What was set is written when the event loop comes to it.
    bool event(QEvent* event) override
    {
        if (event->type() == QEvent::UpdateRequest)
            prepareWriting();
        return QSettings::event(event);
    }

private:
    void prepareWriting()
    {
        if (!m_isChanged)
            return;
        m_isChanged = false;
        if (fileName() == memoryPath)
            return;
        const QString folder = QFileInfo(fileName()).path();
        if (const std::error_code error = makePrivateFolder(QFile::encodeName(folder).toStdString()))
            qWarning("The settings' folder cannot be made: %s", error.message().c_str());
        makeFilePrivate(fileName(), Missing::IsMade);
    }

    bool m_isChanged = false;
};

UserDefaults::UserDefaults(const QString& filePath)
    : m_settings(std::make_unique<Store>(storePath(filePath)))
{
}

UserDefaults::~UserDefaults() = default;

QString UserDefaults::standardFilePath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + "/MORVEL/Pelmora.conf"_L1;
}

void UserDefaults::registerDefaults(const QVariantMap& defaults)
{
    m_registered.insert(defaults);
}

QVariant UserDefaults::object(const QString& key) const
{
    if (m_settings->contains(key + arraySize))
        return arrayObject(key);
    const QVariant stored = m_settings->value(key);
    return stored.isValid() ? stored : m_registered.value(key);
}

QVariantList UserDefaults::arrayObject(const QString& key) const
{
    // Reading a group moves the store's current one, which no caller sees.
    QSettings& settings = *m_settings;
    settings.beginGroup(key);
    // The items that are there, and not as many as the file says: that may be any number.
    const qint64 size = integerValue(settings.value(arraySize.sliced(1)).toString());
    QMap<qint64, QVariant> items;
    for (const QString& number : settings.childGroups()) {
        const qint64 index = integerValue(number);
        if (index >= 1 && index <= size)
            items.insert(index, settings.value(number + u'/' + arrayItem));
    }
    settings.endGroup();
    return items.values();
}

void UserDefaults::setObject(const QString& key, const QVariant& value)
{
    m_settings->setChanged();
    m_settings->remove(key);
    if (value.typeId() != QMetaType::QVariantList) {
        m_settings->setValue(key, value);
        return;
    }
    const QVariantList items = value.toList();
    const auto size = static_cast<int>(items.size());
    m_settings->beginWriteArray(key, size);
    for (int index = 0; index < size; ++index) {
        m_settings->setArrayIndex(index);
        m_settings->setValue(arrayItem, items.at(index));
    }
    m_settings->endArray();
}

void UserDefaults::remove(const QString& key)
{
    m_settings->setChanged();
    m_settings->remove(key);
}

void UserDefaults::synchronize()
{
    m_settings->synchronize();
}
