/// A reader of XML that is not ours, the platform's: what we wrote has to come back, and an XPath expression of ours
/// has to mean what it should.
#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace zk_test {

class TXmlDocument {
public:
    /// Parses the bytes of a document, which tell their encoding by a mark or by their declaration. White space counts.
    /// \throws std::runtime_error with the parser's reason when they are not well-formed
    explicit TXmlDocument(std::string_view sBytes);
    ~TXmlDocument();
    TXmlDocument(TXmlDocument const &) = delete;
    TXmlDocument & operator=(TXmlDocument const &) = delete;

    /// The text of the first node that the XPath expression finds.
    /// \throws std::runtime_error when there is none, or the expression is refused
    [[nodiscard]] std::wstring sGetText(std::wstring const & sXPath) const;
    /// How many nodes the XPath expression finds.
    /// \throws std::runtime_error when it is refused
    [[nodiscard]] long lCount(std::wstring const & sXPath) const;

private:
    struct TState;
    std::unique_ptr<TState> pState;
};

} // namespace zk_test
