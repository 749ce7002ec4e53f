#include "platform/OutputCapture.h"

#include <new>
#include <utility>

#include "platform/CaptureState.h"

namespace quillon::platform {

OutputCapture::OutputCapture() : m_state(State::Make()) { ResumeDrain(); }

OutputCapture::~OutputCapture() {
    m_state->writer.Reset();
    if (!m_state->reader) return;
    // Usually the last writer has gone with the command, and no thread is needed.
    constexpr int kMostPieces = 64;
    for (int i = 0; i < kMostPieces; ++i) {
        const std::optional<std::string_view> piece = Read();
        if (!piece || piece->empty()) break;
    }
    m_state->CancelRead();
    try {
        if (!m_state->hasEnded) DrainInBackground(std::move(m_state->reader));
    } catch (const std::bad_alloc&) {  // the pipe is closed
    }
}

const FileHandle& OutputCapture::ChildEnd() const { return m_state->writer; }

void OutputCapture::CloseChildEnd() { m_state->writer.Reset(); }

bool OutputCapture::HasEnded() const { return m_state->hasEnded || !m_state->reader; }

void OutputCapture::Refuse() {
    m_state->writer.Reset();
    m_state->CancelRead();
    m_state->reader.Reset();
}

}  // namespace quillon::platform
