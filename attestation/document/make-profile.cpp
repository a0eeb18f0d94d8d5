// Writes the colour profile that archived documents name for their colours, as a source file: make-profile OUTPUT.cpp
// It is sRGB in version 2 of the profiles' format, which is the one that PDF 1.4 knows, deflated. The same bytes each
// time.
#include <algorithm>
#include <array>
#include <fstream>
#include <iostream>
#include <vector>

#include <lcms2.h>
#include <zlib.h>

namespace {

using Bytes = std::vector<unsigned char>;

Bytes profile()
{
    const cmsHPROFILE made = cmsCreate_sRGBProfile();
    cmsSetProfileVersion(made, 2.1);
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(made, nullptr, &size);
    Bytes bytes(size);
    const bool isSaved = size > 0 && cmsSaveProfileToMem(made, bytes.data(), &size) != 0;
    cmsCloseProfile(made);
    if (!isSaved)
        return {};
    // The time of making stands in the header: a day that never changes.
    constexpr std::ptrdiff_t timeOffset = 24;
    constexpr std::array<unsigned char, 12> firstOfJanuary2000{0x07, 0xd0, 0, 1, 0, 1};
    std::ranges::copy(firstOfJanuary2000, bytes.begin() + timeOffset);
    return bytes;
}

Bytes deflated(const Bytes& bytes)
{
    uLongf size = compressBound(uLong(bytes.size()));
    Bytes result(size);
    if (compress2(result.data(), &size, bytes.data(), uLong(bytes.size()), Z_BEST_COMPRESSION) != Z_OK)
        return {};
    result.resize(size);
    return result;
}

} // namespace

int main(int argc, char* argv[])
{
    if (argc != 2) {
        std::cerr << "make-profile OUTPUT.cpp\n";
        return 1;
    }
    const Bytes bytes = deflated(profile());
    std::ofstream file(argv[1]);
    file << "#include \"attestation/document/SrgbProfile.h\"\n\nnamespace {\n\nconstexpr unsigned char bytes[] = {";
    for (std::size_t i = 0; i < bytes.size(); ++i)
        file << (i % 24 == 0 ? "\n    " : " ") << int(bytes[i]) << ',';
    file << "\n};\n\n} // namespace\n\nstd::string deflatedSrgbProfile()\n{\n"
         << "    return {reinterpret_cast<const char*>(bytes), sizeof bytes};\n}\n";
    return !bytes.empty() && file.flush() ? 0 : 1;
}
