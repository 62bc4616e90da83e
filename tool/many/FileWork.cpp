#include "tool/many/FileWork.h"

#include <cstring>
#include <stdexcept>
#include <type_traits>

#include "stmdcm/reading/PossibleName.h"
#include "tool/output/AsFailure.h"
#include "tool/output/StandardOutput.h"

namespace stmdcm {

namespace {

/// One pass over the fields for both directions, so that they can't differ. Numbers are in the order of this machine.
class Encoder {
  public:
    template <class Number>
    void Do(const Number& number) requires std::is_trivially_copyable_v<Number> {
        bytes.append(reinterpret_cast<const char*>(&number), sizeof number);
    }
    void Do(const std::string& text) {
        Do(text.size());
        bytes += text;
    }
    void Do(const std::vector<Count>& counts) {
        Do(counts.size());
        for (const Count& count : counts) {
            Each(*this, count);
        }
    }
    template <class Coder, class CountType>
    static void Each(Coder& coder, CountType& count) {
        coder.Do(count.what);
        coder.Do(count.number);
        coder.Do(count.isNoun);
    }

    std::string bytes;
};

class Decoder {
  public:
    explicit Decoder(std::string_view bytes) : m_bytes(bytes) {}

    template <class Number>
    void Do(Number& number) requires std::is_trivially_copyable_v<Number> {
        std::memcpy(&number, Take(sizeof number).data(), sizeof number);
    }
    void Do(std::string& text) {
        std::size_t size = 0;
        Do(size);
        text = Take(size);
    }
    void Do(std::vector<Count>& counts) {
        std::size_t size = 0;
        for (Do(size); counts.size() < size;) {
            Encoder::Each(*this, counts.emplace_back());
        }
    }

  private:
    std::string_view Take(std::size_t size) {
        if (size > m_bytes.size()) {
            throw std::logic_error("a message between processes is cut short");
        }
        const std::string_view taken = m_bytes.substr(0, size);
        m_bytes.remove_prefix(size);
        return taken;
    }

    std::string_view m_bytes;
};

template <class Coder, class Outcome>
void CodeAll(Coder& coder, Outcome& outcome) {
    coder.Do(outcome.told.out);
    coder.Do(outcome.told.error);
    coder.Do(outcome.result.status);
    coder.Do(outcome.result.failure);
    coder.Do(outcome.result.counts);
    coder.Do(outcome.result.hasDoubts);
}

}  // namespace

std::string FileOutcome::Encode() const {
    Encoder encoder;
    CodeAll(encoder, *this);
    return std::move(encoder.bytes);
}

FileOutcome FileOutcome::Decode(std::string_view bytes) {
    FileOutcome outcome;
    Decoder decoder(bytes);
    CodeAll(decoder, outcome);
    return outcome;
}

FileOutcome WorkOn(const std::string& file, const FileWork& work, const Context& context) {
    FileOutcome outcome;
    const Console console = context.console.Into(outcome.told);
    const Context own{context.options, console, context.command, context.ofFailure, true, context.ofUnknown};
    try {
        outcome.result = AsFailure([&] {
            RequirePossibleName(file);
            RefuseStandardOutputIn(file);
            return work(own, file);
        });
    } catch (const Failure& failure) {
        if (!context.options.json && outcome.told.out.empty()) {
            outcome.told.out = context.ofUnknown;
        }
        outcome.result.status = own.Tell(failure);
        outcome.result.failure = Context::Sentence(failure);
    }
    return outcome;
}

}  // namespace stmdcm
