#pragma once

// Text kept for the whole of an import in large blocks: what is added never
// moves, so views of it stay valid, and a dictionary's hundreds of thousands
// of small strings cost no allocation each.

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace lexicorn::dictimport {

class TextStore {
public:
    // A copy of the text, kept as long as the store.
    std::string_view add(std::string_view text)
    {
        if (text.size() > blockSize / 4)
            return keep(std::string(text));
        if (!current_ || current_->size() + text.size() > current_->capacity()) {
            blocks_.push_back(std::make_unique<std::string>());
            current_ = blocks_.back().get();
            current_->reserve(blockSize);
        }
        const size_t at = current_->size();
        current_->append(text);
        return std::string_view(*current_).substr(at);
    }

    // Takes the whole buffer: views into it stay valid as long as the store.
    std::string_view keep(std::string text)
    {
        blocks_.push_back(std::make_unique<std::string>(std::move(text)));
        return *blocks_.back();
    }

private:
    static constexpr size_t blockSize = size_t(1) << 22;
    std::vector<std::unique_ptr<std::string>> blocks_;
    std::string* current_ = nullptr;
};

}  // namespace lexicorn::dictimport
