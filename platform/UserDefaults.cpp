#include "platform/UserDefaults.h"

#include "platform/FileDescriptor.h"
#include "platform/IntegerValue.h"
#include "platform/PrivateFolder.h"

#include <QDebug>
#include <QEvent>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>

#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {
// QSettings reads a list of one text back as a text, and an empty list as nothing: arrays are written item by item.
constexpr QLatin1StringView arrayItem{"value"};
constexpr QLatin1StringView arraySize{"/size"};

// No file can be made below this device: QSettings then keeps the values in memory.
constexpr QLatin1StringView memoryPath{"/dev/null/settings"};

constexpr mode_t others = S_IRWXG | S_IRWXO;

/// Removes the permissions of others from an open file of this user.
void makePrivate(const FileDescriptor& file, const struct stat& status)
{
    if (status.st_uid == geteuid() && (status.st_mode & others) != 0)
        fchmod(file.get(), status.st_mode & mode_t{07777} & ~others);
}

enum class Missing
{
    StaysMissing,
    IsMade
};

/// Removes the permissions of others. False when the path is not a plain file. Never waits.
bool makeFilePrivate(const QString& filePath, Missing missing)
{
    const int whenMissing = missing == Missing::IsMade ? O_CREAT : 0;
    const FileDescriptor file(open(QFile::encodeName(filePath).constData(),
                                   O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC | whenMissing, S_IRUSR | S_IWUSR));
    // Missing or not readable: QSettings handles both.
    if (!file.isValid())
        return true;
    struct stat status = {};
    const bool isPlain = fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode);
    if (isPlain)
        makePrivate(file, status);
    return isPlain;
}

/// Keeps other users from listing the program's folder.
void makeFolderPrivate(const QString& folderPath)
{
    const FileDescriptor folder(open(QFile::encodeName(folderPath).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    struct stat status = {};
    if (folder.isValid() && fstat(folder.get(), &status) == 0)
        makePrivate(folder, status);
}

/// The file, or the path that keeps the store in memory.
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

/// QSettings replaces its file at each write. The new file gets the permissions of the old one or, when there was none,
/// those of the umask. So a private file is made before the first write.
class UserDefaults::Store final : public QSettings
{
public:
    explicit Store(const QString& filePath)
        : QSettings(filePath, QSettings::IniFormat)
    {
    }
    Q_DISABLE_COPY(Store)
    // QSettings writes in its destructor.
    ~Store() override { prepareWriting(); }

    void synchronize()
    {
        prepareWriting();
        sync();
        // QSettings writes the values of all its objects for one file together.
        makeFilePrivate(fileName(), Missing::StaysMissing);
    }

    void setChanged() { m_isChanged = true; }

protected:
    // QSettings writes at this event.
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

void UserDefaults::setSiteValues(SiteValues values)
{
    m_site = std::move(values);
}

QVariant UserDefaults::object(const QString& key) const
{
    if (isLocked(key))
        return m_site.locked.value(key);
    if (m_settings->contains(key + arraySize))
        return arrayObject(key);
    const QVariant stored = m_settings->value(key);
    return stored.isValid() ? stored : m_site.defaults.value(key, m_registered.value(key));
}

QVariantList UserDefaults::arrayObject(const QString& key) const
{
    // beginGroup changes the object, but restores it at endGroup.
    QSettings& settings = *m_settings;
    settings.beginGroup(key);
    // The loop goes over the items in the file: the stored size may be any number.
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
    if (isLocked(key))
        return;
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
    if (isLocked(key))
        return;
    m_settings->setChanged();
    m_settings->remove(key);
}

void UserDefaults::synchronize()
{
    m_settings->synchronize();
}
