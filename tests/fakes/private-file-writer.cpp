#include "platform/files/PrivateFile.h"

#include <QFile>

#include <cerrno>
#include <string_view>

#include <fcntl.h>
#include <seccomp.h>

namespace {

// Like a file system without unnamed files: vfat, FUSE, and most network file systems.
bool refuseUnnamedFiles()
{
    const scmp_filter_ctx filter = seccomp_init(SCMP_ACT_ALLOW);
    const scmp_arg_cmp isUnnamed = SCMP_A2_64(SCMP_CMP_MASKED_EQ, O_TMPFILE, O_TMPFILE);
    const bool isLoaded = filter != nullptr &&
                          seccomp_rule_add(filter, SCMP_ACT_ERRNO(EOPNOTSUPP), SCMP_SYS(openat), 1, isUnnamed) == 0 &&
                          seccomp_load(filter) == 0;
    seccomp_release(filter);
    return isLoaded;
}

} // namespace

// Writes a private file, so that a test can kill it meanwhile: private-file-writer PATH SIZE CHARACTER [named]. With
// "named" it writes the file as on file systems without unnamed files.
int main(int argc, char* argv[])
{
    if (argc < 4 || (argc == 5 && (argv[4] != std::string_view("named") || !refuseUnnamedFiles())))
        return 2;
    const QByteArray content(QByteArray(argv[2]).toInt(), argv[3][0]);
    return writePrivateFile(QFile::decodeName(argv[1]), content) ? 0 : 1;
}
