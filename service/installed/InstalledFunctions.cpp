#include "service/installed/InstalledFunctions.h"

#include "service/installed/LibraryProbe.h"

#include <QFile>

#include <array>
#include <optional>

#include <dlfcn.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace {

/// Finds one function; returns its name when it is missing.
template <typename Function>
std::optional<QString> find(void* library, const char* name, Function& function)
{
    // POSIX allows this cast for dlsym.
    function = reinterpret_cast<Function>(::dlsym(library, name));
    return function != nullptr ? std::nullopt : std::optional(QString::fromLatin1(name));
}

SystemFileFault refused(const QString& reason)
{
    return {.isAbsent = false, .reason = reason};
}

/// Loads the library and checks its interface; the error is the reason.
std::expected<InstalledFunctions, QString> load(const QByteArray& path)
{
    const QString name = QFile::decodeName(path);
    // By path, not by descriptor, so that it finds files beside it. It is never unloaded: its threads may still run.
    void* const library = ::dlopen(path.constData(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        const char* const reason = ::dlerror(); // NOLINT(concurrency-mt-unsafe): each thread has its own
        return std::unexpected(u"%1 ne se charge pas : %2"_s.arg(name, QString::fromLocal8Bit(reason)));
    }
    const FoundFunctions found = findInstalledFunctions(library);
    if (!found.missing.isEmpty())
        return std::unexpected(u"%1 n’a pas de fonction %2"_s.arg(name, found.missing.first()));
    if (const int interface = found.functions.interface(); interface != PELMORA_READING_INTERFACE) {
        return std::unexpected(u"%1 est de l’interface %2, et non %3"_s.arg(name).arg(interface).arg(
            static_cast<int>(PELMORA_READING_INTERFACE)));
    }
    return found.functions;
}

/// Identifies the content of a file.
struct FileIdentity
{
    dev_t device = 0;
    ino_t number = 0;
    off_t size = 0;
    std::array<time_t, 2> changed{}; // seconds and nanoseconds

    friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

FileIdentity identityOf(const QByteArray& path)
{
    struct stat status = {};
    if (::stat(path.constData(), &status) != 0)
        return {};
    return {.device = status.st_dev,
            .number = status.st_ino,
            .size = status.st_size,
            .changed = {status.st_ctim.tv_sec, status.st_ctim.tv_nsec}};
}

} // namespace

FoundFunctions findInstalledFunctions(void* library)
{
    FoundFunctions found;
    for (const std::optional<QString>& missing : {
             find(library, "pelmora_reading_interface", found.functions.interface),
             find(library, "pelmora_reading_open", found.functions.open),
             find(library, "pelmora_reading_close", found.functions.close),
             find(library, "pelmora_reading_version", found.functions.version),
             find(library, "pelmora_reading_readers", found.functions.readers),
             find(library, "pelmora_reading_choose_readers", found.functions.chooseReaders),
             find(library, "pelmora_reading_read_card", found.functions.readCard),
         }) {
        if (missing)
            found.missing.append(*missing);
    }
    return found;
}

std::expected<InstalledFunctions, SystemFileFault> loadInstalledFunctions(const SystemPlace& place,
                                                                          std::chrono::milliseconds patience)
{
    if (const auto checked = checkSystemFile(place); !checked)
        return std::unexpected(checked.error());
    const QByteArray path = place.path();
    const QString name = QFile::decodeName(path);
    // A damaged file, or a library that crashes or hangs, ends the process that loads it. Reasons of load() start with
    // the file's name, the others do not.
    const FileIdentity tried = identityOf(path);
    const auto trial = [&path] {
        const std::expected<InstalledFunctions, QString> loaded = load(path);
        return loaded ? QString() : loaded.error();
    };
    if (const std::expected<void, QString> trialEnd = tryInChild(trial, patience); !trialEnd) {
        const QString& reason = trialEnd.error();
        return std::unexpected(
            refused(reason.startsWith(name) ? reason : u"%1 ne se charge pas : %2"_s.arg(name, reason)));
    }
    if (identityOf(path) != tried)
        return std::unexpected(refused(u"%1 a changé pendant son essai"_s.arg(name)));
    const std::expected<InstalledFunctions, QString> functions = load(path);
    if (!functions)
        return std::unexpected(refused(functions.error()));
    return *functions;
}
