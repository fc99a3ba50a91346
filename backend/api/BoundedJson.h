// SPDX-License-Identifier: GPL-3.0-or-later
// Seen by the files alone that know the JSON library.
#pragma once

#include <boost/json.hpp>
#include <cstddef>
#include <new>
#include <string_view>

namespace lorvane::backend {

// A text of a client, parsed in no more memory than a text of its size is worth: a list of a million numbers
// would take twenty times its own bytes. What takes more is as malformed as what is no JSON object.
class BoundedJson {
 public:
    static constexpr std::size_t leastBytes = std::size_t(1) << 20;

    BoundedJson(std::string_view text, std::size_t bytesForEach)
        : memory_(bytesForEach * text.size() + leastBytes) {
        try {
            boost::json::parser parser(&memory_);
            parser.reset(&memory_);
            boost::json::error_code error;
            parser.write(text.data(), text.size(), error);
            if (!error)
                value_ = parser.release();
        } catch (const std::bad_alloc&) {
            value_ = nullptr;
        }
    }
    BoundedJson(const BoundedJson&) = delete;
    BoundedJson& operator=(const BoundedJson&) = delete;

    // Nothing when it is none. Lives as long as this.
    const boost::json::object* object() const { return value_.if_object(); }

 private:
    class Memory : public boost::json::memory_resource {
     public:
        explicit Memory(std::size_t bytes) : left_(bytes) {}

     private:
        void* do_allocate(std::size_t size, std::size_t) override {
            if (size > left_)
                throw std::bad_alloc();
            // The library asks for no more than the usual alignment, and names another one when it gives
            // back.
            void* const bytes = ::operator new(size);
            left_ -= size;
            return bytes;
        }
        void do_deallocate(void* bytes, std::size_t size, std::size_t) override {
            ::operator delete(bytes);
            left_ += size;
        }
        bool do_is_equal(const memory_resource& other) const noexcept override { return this == &other; }

        std::size_t left_;
    };

    Memory memory_;
    boost::json::value value_ = boost::json::value(boost::json::storage_ptr(&memory_));
};

} // namespace lorvane::backend
