// The work that every program must do to write a compressed document: bench_raw_pdf INPUT OUTPUT deflates the input and
// writes it. The input is a finished, uncompressed document.
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

#include <libdeflate.h>

int main(int argc, char* argv[])
{
    if (argc != 3)
        return EXIT_FAILURE;
    std::ifstream input(argv[1], std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(input), {}};
    constexpr int level = 4;
    const std::unique_ptr<libdeflate_compressor, void (*)(libdeflate_compressor*)> compressor(
        libdeflate_alloc_compressor(level), &libdeflate_free_compressor);
    if (bytes.empty() || !compressor)
        return EXIT_FAILURE;
    std::string result(libdeflate_zlib_compress_bound(compressor.get(), bytes.size()), '\0');
    result.resize(libdeflate_zlib_compress(compressor.get(), bytes.data(), bytes.size(), result.data(), result.size()));
    std::ofstream output(argv[2], std::ios::binary);
    return output << result && output.flush() ? EXIT_SUCCESS : EXIT_FAILURE;
}
