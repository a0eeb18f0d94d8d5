#include "service/installed/InstalledFunctions.h"

#include <QFile>

#include <optional>

#include <dlfcn.h>

using namespace Qt::StringLiterals;

namespace {

/// Finds one function; the name of it when it is missing.
template <typename Function>
std::optional<QString> find(void* library, const char* name, Function& function)
{
    // The one way to a function from dlsym, which POSIX allows.
    function = reinterpret_cast<Function>(::dlsym(library, name));
    return function != nullptr ? std::nullopt : std::optional(QString::fromLatin1(name));
}

std::expected<InstalledFunctions, QString> findAll(void* library)
{
    InstalledFunctions found;
    for (const std::optional<QString>& missing : {
             find(library, "pelmora_reading_interface", found.interface),
             find(library, "pelmora_reading_open", found.open),
             find(library, "pelmora_reading_close", found.close),
             find(library, "pelmora_reading_version", found.version),
             find(library, "pelmora_reading_readers", found.readers),
             find(library, "pelmora_reading_choose_readers", found.chooseReaders),
             find(library, "pelmora_reading_read_card", found.readCard),
         }) {
        if (missing)
            return std::unexpected(*missing);
    }
    return found;
}

SystemFileFault refused(const QString& reason)
{
    return {.isAbsent = false, .reason = reason};
}

} // namespace

std::expected<InstalledFunctions, SystemFileFault> loadInstalledFunctions(const SystemPlace& place)
{
    if (const auto checked = checkSystemFile(place); !checked)
        return std::unexpected(checked.error());
    const QString path = QFile::decodeName(place.path());
    // By its path, and not by the descriptor that was looked at: only so does it find what lies beside it. It is never
    // unloaded: threads that it made could not bear that.
    void* const library = ::dlopen(place.path().constData(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        const char* const reason = ::dlerror(); // NOLINT(concurrency-mt-unsafe): each thread has its own
        return std::unexpected(refused(u"%1 ne se charge pas : %2"_s.arg(path, QString::fromLocal8Bit(reason))));
    }
    const std::expected<InstalledFunctions, QString> functions = findAll(library);
    if (!functions)
        return std::unexpected(refused(u"%1 n’a pas de fonction %2"_s.arg(path, functions.error())));
    if (const int interface = functions->interface(); interface != PELMORA_READING_INTERFACE) {
        return std::unexpected(refused(u"%1 est de l’interface %2, et non %3"_s.arg(path).arg(interface).arg(
            static_cast<int>(PELMORA_READING_INTERFACE))));
    }
    return *functions;
}
