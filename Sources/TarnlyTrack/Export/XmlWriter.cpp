#include "TarnlyTrack/Export/XmlWriter.hpp"

#include <libxml/xmlwriter.h>

#include <exception>
#include <string_view>

#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyTrack/Log/FlightLogReader.hpp"

namespace tarnly::track {
namespace {

const xmlChar* chars(const char* text) { return reinterpret_cast<const xmlChar*>(text); }

bool isForbidden(char c) {
    return static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r';
}

/// As XML 1.0 may hold it. The two code points below U+FFFF that it may not hold either are looked for as
/// bytes.
std::string allowed(const std::string& text) {
    constexpr std::string_view replacement = "\uFFFD";
    auto result = wellFormedUtf8(text);
    for (std::size_t i = 0; i < result.size(); ++i) {
        if (isForbidden(result[i])) result.replace(i, 1, replacement);
    }
    for (const std::string_view none : {"\xEF\xBF\xBE", "\xEF\xBF\xBF"}) {
        for (auto at = result.find(none); at != std::string::npos; at = result.find(none))
            result.replace(at, none.size(), replacement);
    }
    return result;
}

} // namespace

struct XmlWriter::State {
    explicit State(TextSink& to) : sink(to) {}

    TextSink& sink;
    /// What the sink has thrown, which must not fly through the library.
    std::exception_ptr failure;
    xmlTextWriterPtr writer = nullptr;

    static int write(void* context, const char* text, int size) {
        auto& state = *static_cast<State*>(context);
        if (state.failure) return -1;
        try {
            state.sink.write({text, static_cast<std::size_t>(size)});
        } catch (...) {
            state.failure = std::current_exception();
            return -1;
        }
        return size;
    }
};

XmlWriter::XmlWriter(TextSink& sink) : state_(std::make_unique<State>(sink)) {
    // Its own words on a disk that is full would stand between ours. Releases differ in the error's type.
    xmlSetStructuredErrorFunc(nullptr, [](void*, auto*) {});
    auto* const output = xmlOutputBufferCreateIO(&State::write, nullptr, state_.get(), nullptr);
    if (output == nullptr) throw TrackError("there is no memory for the export");
    state_->writer = xmlNewTextWriter(output);
    if (state_->writer == nullptr) {
        xmlOutputBufferClose(output);
        throw TrackError("there is no memory for the export");
    }
    check(xmlTextWriterSetIndent(state_->writer, 1));
    check(xmlTextWriterSetIndentString(state_->writer, chars(" ")));
    check(xmlTextWriterStartDocument(state_->writer, nullptr, "UTF-8", nullptr));
}

XmlWriter::~XmlWriter() { xmlFreeTextWriter(state_->writer); }

void XmlWriter::check(int result) const {
    if (state_->failure) std::rethrow_exception(state_->failure);
    if (result < 0) throw TrackError("there is no memory for the export");
}

void XmlWriter::begin(const char* element) {
    check(xmlTextWriterStartElement(state_->writer, chars(element)));
}

void XmlWriter::end() { check(xmlTextWriterEndElement(state_->writer)); }

void XmlWriter::attribute(const char* name, const std::string& value) {
    check(xmlTextWriterWriteAttribute(state_->writer, chars(name), chars(allowed(value).c_str())));
}

void XmlWriter::text(const std::string& text) {
    check(xmlTextWriterWriteString(state_->writer, chars(allowed(text).c_str())));
}

void XmlWriter::element(const char* name, const std::string& content) {
    begin(name);
    text(content);
    end();
}

void XmlWriter::finish() {
    check(xmlTextWriterEndDocument(state_->writer));
    check(xmlTextWriterFlush(state_->writer));
}

} // namespace tarnly::track
