#include <QorCore/StandardOutputStream.h>

#include <streambuf>

namespace Qor::Core {

class StandardOutputStream::Buffer final : public std::streambuf {
public:
    explicit Buffer(BinaryOutputStream& target) : m_target(target) {}

protected:
    int_type overflow(int_type character) override {
        if (!traits_type::eq_int_type(character, traits_type::eof())) {
            const char byte = traits_type::to_char_type(character);
            m_target.Write(&byte, 1);
        }
        return traits_type::not_eof(character);
    }
    std::streamsize xsputn(const char* characters, std::streamsize count) override {
        m_target.Write(characters, static_cast<std::uint64_t>(count));
        return count;
    }
    int sync() override {
        m_target.Flush();
        return 0;
    }

private:
    BinaryOutputStream& m_target;
};

StandardOutputStream::StandardOutputStream(BinaryOutputStream& target)
    : std::ostream(nullptr), m_buffer(std::make_unique<Buffer>(target)) {
    rdbuf(m_buffer.get());
    exceptions(std::ios_base::badbit); // else standard streams keep to themselves what is raised
}

StandardOutputStream::~StandardOutputStream() = default;

} // namespace Qor::Core
