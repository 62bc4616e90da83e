#include "stmdcm/bundle/BundleManifest.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <optional>

#include "stmdcm/Failure.h"
#include "stmdcm/pins/ImageIdentity.h"
#include "stmdcm/pins/Sha256.h"
#include "stmdcm/reading/Findings.h"

namespace stmdcm {

namespace {

constexpr std::string_view kFirstLine = "stmdcm-bundle 1";
constexpr std::string_view kLastLine = "end";
constexpr std::string_view kCapture = "capture";
constexpr std::string_view kImage = "image";
constexpr std::string_view kNothing = "-";
constexpr char kEscape = '%';
constexpr int kHexadecimal = 16;

bool IsPlain(char c) { return c > ' ' && c <= '~' && c != kEscape; }

/// A word of a line: bytes that are no printable ASCII, blanks and "%" as "%20"; "-" for no bytes.
std::string Encode(std::string_view bytes) {
    if (bytes.empty()) {
        return std::string(kNothing);
    }
    std::string word;
    for (const char c : bytes) {
        word += IsPlain(c) && bytes != kNothing ? std::string(1, c) : kEscape + InHexadecimal({&c, 1});
    }
    return word;
}

/// The bytes that two digits each stand for.
std::optional<std::string> FromHexadecimal(std::string_view digits) {
    std::string bytes;
    for (; digits.size() > 1; digits.remove_prefix(2)) {
        unsigned char value = 0;
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + 2, value, kHexadecimal);
        if (error != std::errc() || end != digits.data() + 2) {
            return std::nullopt;
        }
        bytes += static_cast<char>(value);
    }
    return digits.empty() ? std::optional(bytes) : std::nullopt;
}

std::optional<std::string> Decode(std::string_view word) {
    std::string bytes;
    if (word == kNothing) {
        return bytes;
    }
    while (!word.empty()) {
        const bool isEscaped = word.front() == kEscape;
        const auto decoded = isEscaped ? FromHexadecimal(word.substr(1, 2)) : std::string(word.substr(0, 1));
        if (!decoded || decoded->empty() || (!isEscaped && !IsPlain(word.front()))) {
            return std::nullopt;
        }
        bytes += *decoded;
        word.remove_prefix(isEscaped ? 3 : 1);
    }
    return bytes;
}

/// A file in the folder it is about, and no way out of it.
bool IsFileName(std::string_view name) {
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string_view::npos &&
           name.find('\0') == std::string_view::npos;
}

/// Takes the lines of a manifest one by one.
class Parser {
  public:
    Parser(std::string_view text, const std::string& path) : m_rest(text), m_path(path) {}

    BundleManifest Parse() {
        if (NextLine() != kFirstLine) {
            Fail(fmt::format("it does not begin with \"{}\"", kFirstLine));
        }
        BundleManifest manifest;
        TakeLine(NextLine(), kCapture);
        TakeFile(manifest.capture, "");
        RequireEndOfLine();
        for (std::string_view line = NextLine(); line != kLastLine; line = NextLine()) {
            TakeLine(line, kImage);
            BundledImage image;
            TakeFile(image, fmt::format("{}/", kImageFolder));
            image.name = Text();
            image.path = Text();
            RequireEndOfLine();
            manifest.images.push_back(std::move(image));
        }
        if (!m_rest.empty()) {
            Fail("something stands behind the end");
        }
        return manifest;
    }

  private:
    std::string_view NextLine() {
        ++m_number;
        const std::size_t end = m_rest.find('\n');
        if (end == std::string_view::npos) {
            Fail("the file ends before its last line");
        }
        const std::string_view line = m_rest.substr(0, end);
        m_rest.remove_prefix(end + 1);
        return line;
    }

    void TakeLine(std::string_view line, std::string_view kind) {
        m_line = line;
        if (Word() != kind) {
            Fail(fmt::format("here \"{}\" was to come", kind));
        }
    }

    std::string_view Word() {
        const std::string_view word = m_line.substr(0, m_line.find(' '));
        m_line.remove_prefix(std::min(word.size() + 1, m_line.size()));
        return word;
    }

    std::string Text() {
        const std::string_view word = Word();
        auto text = Decode(word);
        if (word.empty() || !text || text->find('\0') != std::string::npos) {
            Fail(fmt::format("{} is no text", Quoted(word)));
        }
        return *text;
    }

    void TakeFile(BundledFile& file, const std::string& folder) {
        const std::string_view size = Word();
        const auto [end, error] = std::from_chars(size.data(), size.data() + size.size(), file.size);
        if (error != std::errc() || size.empty() || end != size.data() + size.size()) {
            Fail(fmt::format("{} is no size", Quoted(size)));
        }
        const std::string_view hash = Word();
        file.sha256 = FromHexadecimal(hash).value_or("");
        if (file.sha256.size() != kSha256Size) {
            Fail(fmt::format("{} is no SHA-256", Quoted(hash)));
        }
        file.file = Text();
        if (!file.file.starts_with(folder) || !IsFileName(std::string_view(file.file).substr(folder.size()))) {
            Fail(fmt::format("{} is no file {}", Quoted(file.file),
                             folder.empty() ? "in this directory" : "in images/ of this directory"));
        }
    }

    void RequireEndOfLine() {
        if (!m_line.empty()) {
            Fail(fmt::format("{} stands behind the line's end", Quoted(m_line)));
        }
    }

    [[noreturn]] void Fail(const std::string& what) const {
        throw Failure(m_path, fmt::format("this is no bundle of stmdcm: line {}: {}", m_number, what));
    }

    std::string_view m_rest;
    std::string_view m_line;
    const std::string& m_path;
    std::size_t m_number = 0;
};

std::string FileWords(std::string_view kind, const BundledFile& file) {
    return fmt::format("{} {} {} {}", kind, file.size, InHexadecimal(file.sha256), Encode(file.file));
}

}  // namespace

std::string BundleManifest::Text() const {
    std::string text = fmt::format("{}\n{}\n", kFirstLine, FileWords(kCapture, capture));
    for (const BundledImage& image : images) {
        text += fmt::format("{} {} {}\n", FileWords(kImage, image), Encode(image.name), Encode(image.path));
    }
    return text + fmt::format("{}\n", kLastLine);
}

BundleManifest BundleManifest::Parse(std::string_view text, const std::string& path) {
    BundleManifest manifest = Parser(text, path).Parse();
    if (const std::string form = manifest.Text(); form != text) {
        const auto* const differing = std::mismatch(text.begin(), text.end(), form.begin(), form.end()).first;
        const auto line = std::count(text.begin(), differing, '\n') + 1;
        throw Failure(path, fmt::format("this is no bundle of stmdcm: line {} is not written as stmdcm writes it: "
                                        "sizes without zeros in front, small letters, and % for no plain character",
                                        line));
    }
    return manifest;
}

}  // namespace stmdcm
