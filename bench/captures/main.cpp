// Makes a test farm's captures: make_captures FOLDER COUNT [SEED]. The same seed gives the same files, and the first of
// more are those of fewer. They are small, and of every kind that a farm has.

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>

#include "bench/captures/CaptureKinds.h"
#include "source_utilities/PosixFile.h"

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kFilesAFolder = 1000;
constexpr std::size_t kImages = 4;
constexpr std::size_t kLinksToNothing = 400;  // one in so many can't be read
constexpr timespec kRecorded{1700000000, 0};

void Write(const fs::path& path, const std::string& bytes) {
    ZU_WEP::PosixFile file = ZU_WEP::PosixFile::Open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL);
    if (!file.IsOpen() || !file.Write(bytes) || !file.Close()) {
        throw fs::filesystem_error("can't be written", path, std::error_code(errno, std::generic_category()));
    }
}

void WriteImages(const fs::path& folder) {
    fs::create_directory(folder);
    for (std::size_t i = 0; i < kImages; ++i) {
        const fs::path image = folder / fmt::format("app{}.out", i);
        const timespec times[] = {kRecorded, kRecorded};
        Write(image, fmt::format("image {}\n", i));
        ::utimensat(AT_FDCWD, image.c_str(), times, 0);
    }
}

void WriteCaptures(const fs::path& folder, std::size_t count, std::uint64_t seed) {
    fs::create_directory(folder);
    WriteImages(folder / "images");
    for (std::size_t number = 0; number < count; ++number) {
        const fs::path place = folder / fmt::format("{:04}", number / kFilesAFolder);
        if (number % kFilesAFolder == 0) {
            fs::create_directory(place);
        }
        stmdcm_bench::Random random(seed << 32U | number);
        const stmdcm_bench::GeneratedFile file = stmdcm_bench::GenerateFile(random, folder / "images");
        const fs::path path = place / (stmdcm_bench::GenerateName(random, number) + file.extension);
        if (random.OneIn(kLinksToNothing)) {
            fs::create_symlink("moved-to-another-disk", path);
        } else {
            Write(path, file.bytes);
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3 || argc > 4) {
        fmt::print(stderr, "usage: make_captures FOLDER COUNT [SEED]\n");
        return 2;
    }
    try {
        WriteCaptures(fs::absolute(argv[1]), std::strtoul(argv[2], nullptr, 10),
                      argc > 3 ? std::strtoul(argv[3], nullptr, 10) : 1);
        return 0;
    } catch (const std::exception& error) {
        fmt::print(stderr, "make_captures: {}\n", error.what());
        return 1;
    }
}
