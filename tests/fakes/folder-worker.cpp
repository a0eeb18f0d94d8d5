#include "support/move/FolderCopy.h"

#include <QFile>

#include <string_view>

// Copies or removes a folder, so that a test can kill it meanwhile: folder-worker copy SOURCE DESTINATION,
// folder-worker remove FOLDER.
int main(int argc, char* argv[])
{
    if (argc == 4 && std::string_view(argv[1]) == "copy")
        return copyFolder(QFile::decodeName(argv[2]), QFile::decodeName(argv[3])) ? 0 : 1;
    if (argc == 3 && std::string_view(argv[1]) == "remove")
        return removeFolder(QFile::decodeName(argv[2])) ? 0 : 1;
    return 2;
}
