// Where a text stream puts its UTF-16: the ways to an encoding, one a class.
#pragma once

#include "ZkBase/CodePages.h"
#include "ZkTools/Stream.h"

#include <memory>

/// What each way does.
class _actual_TIStreamBuffImpl { // NOLINT(bugprone-reserved-identifier): the name is older than the rule
public:
    /// Takes UTF-16 text, counted in bytes; it may lie at any address.
    virtual void Write(void const * pData, unsigned int uBytes) = 0;
    /// Passes on what is held.
    virtual void Flush() = 0;
    [[nodiscard]] virtual IRawStream * pGetStream() const = 0;
    /// Replaces the pointer, nothing else.
    virtual void SetStream(IRawStream * pNewStream) = 0;
    /// Whether the destructor deletes the stream.
    [[nodiscard]] virtual bool fOwnsStream() const = 0;
    virtual ~_actual_TIStreamBuffImpl() = default;
};

/// Keeps the stream.
class TIStreamBuffImpl : public _actual_TIStreamBuffImpl {
public:
    TIStreamBuffImpl(IRawStream * pStream_, bool fOwner_) noexcept : pStream(pStream_), fOwner(fOwner_) {}
    TIStreamBuffImpl(TIStreamBuffImpl const &) = delete;
    TIStreamBuffImpl & operator=(TIStreamBuffImpl const &) = delete;

    [[nodiscard]] IRawStream * pGetStream() const override { return pStream; }
    void SetStream(IRawStream * pNewStream) override { pStream = pNewStream; }
    [[nodiscard]] bool fOwnsStream() const override { return fOwner; }
    ~TIStreamBuffImpl() override;

protected:
    IRawStream * pStream;
    bool fOwner;
};

/// The way to an encoding.
[[nodiscard]] std::unique_ptr<TIStreamBuffImpl> pMakeStreamBuffImpl(ECodePage eCodePage, IRawStream * pStream,
                                                                    bool fOwner);
