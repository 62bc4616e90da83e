#pragma once

#include <fmt/format.h>

#include <mutex>
#include <optional>
#include <string>

#include "stmdcm/pins/ImageExaminer.h"
#include "stmdcm/reading/Words.h"
#include "tool/output/Progress.h"

namespace stmdcm {

/// Tells which file is hashed and how far. Outlives who has its teller.
class HashProgress {
  public:
    ImageExaminer::OnHashed Teller() {
        return [this](const std::string& path, std::uint64_t done, std::uint64_t size) { Tell(path, done, size); };
    }

  private:
    void Tell(const std::string& path, std::uint64_t done, std::uint64_t size) {
        const std::lock_guard lock(m_mutex);
        if (!m_progress || path != m_path) {
            m_progress.reset();
            m_progress.emplace(fmt::format("Hashing {}", Shown(path)), size, false);
            m_path = path;
        }
        m_progress->Update(done);
        if (done >= size) {
            m_progress.reset();
        }
    }

    std::mutex m_mutex;
    std::string m_path;
    std::optional<Progress> m_progress;
};

}  // namespace stmdcm
