#include "bench/ScratchCapture.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "bench/UsecaseTexts.h"
#include "trace/format/ObjectFileSection.h"
#include "trace/format/SectionLayout.h"
#include "trace/format/StmSections.h"

namespace stmdcm_bench {

using namespace Zu::Wep::Trace;

namespace {

constexpr char kImage[] = "/bin/sh";

void Require(bool condition, const std::string& path) {
    if (!condition) {
        std::perror(path.c_str());
        std::exit(1);
    }
}

}  // namespace

ScratchFile::ScratchFile(const char* extension) : m_path("/tmp/stmdcm-bench-XXXXXX") {
    m_path += extension;
    m_descriptor = ::mkstemps(m_path.data(), static_cast<int>(std::string_view(extension).size()));
    Require(m_descriptor >= 0, m_path);
}

ScratchFile::~ScratchFile() {
    ::close(m_descriptor);
    ::unlink(m_path.c_str());
}

void ScratchFile::Append(std::string_view bytes) {
    const ssize_t count = ::pwrite(m_descriptor, bytes.data(), bytes.size(), static_cast<off_t>(m_size));
    Require(count == static_cast<ssize_t>(bytes.size()), m_path);
    m_size += bytes.size();
}

void ScratchFile::Truncate(std::uint64_t size) {
    Require(::ftruncate(m_descriptor, static_cast<off_t>(size)) == 0, m_path);
    m_size = size;
}

std::string SectionOf(const SectionKey& key, std::string_view payload) {
    const auto length = SectionHeader::kSize + key.name.size() + payload.size();
    return EncodeSectionStart(static_cast<std::uint32_t>(length), key.name, key.version).append(payload);
}

void FillCapture(ScratchFile& file, const CaptureShape& shape) {
    file.Append(kTDFIdentifier);
    const auto length = static_cast<std::uint32_t>(SectionHeader::kSize + kFillerName.size()) + shape.payload;
    for (std::uint32_t i = 0; i < shape.count; ++i) {
        file.Append(EncodeSectionStart(length, kFillerName, i + 1 == shape.count ? kLastVersion : kFillerVersion));
        file.Truncate(file.Size() + shape.payload);
    }
}

void AppendConfiguration(ScratchFile& file) {
    std::string objectFiles;
    struct stat image {};
    Require(::stat(kImage, &image) == 0, kImage);
    AppendObjectFileEntry(objectFiles, {"core0", kImage, image.st_mtim.tv_sec});
    file.Append(SectionOf(kCommonSection, objectFiles));
    file.Append(SectionOf(kDeviceSection, "STM_ATB_Id=33\n"));
    file.Append(SectionOf(kStmSection, "STM_DTC_target_pins = 4\n" + UsecaseText(10)));
}

}  // namespace stmdcm_bench
