// Asks an agent that serves at a named pipe:
//   quillon_pipe_client PIPE
// Each line of standard input goes to the pipe, with a connection of its own, and the answer to standard
// output. It is an empty line when the agent closes the connection without one.
#include <windows.h>

#include <cstdio>
#include <iostream>
#include <string>

namespace {

constexpr DWORD kPauseMs = 5;

/// Waits until the agent is there and takes another client.
HANDLE Connect(const char* pipe) {
    for (;;) {
        const HANDLE client =
            ::CreateFileA(pipe, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
        if (client != INVALID_HANDLE_VALUE) return client;
        ::Sleep(kPauseMs);
    }
}

std::string Converse(HANDLE pipe, const std::string& request) {
    DWORD count = 0;
    if (!::WriteFile(pipe, request.data(), static_cast<DWORD>(request.size()), &count, nullptr)) return {};
    std::string answer;
    char piece[1 << 16];
    while (!answer.ends_with('\n')) {
        if (!::ReadFile(pipe, piece, sizeof piece, &count, nullptr)) return {};
        answer.append(piece, count);
    }
    answer.pop_back();
    return answer;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: quillon_pipe_client PIPE\n", stderr);
        return 2;
    }
    for (std::string request; std::getline(std::cin, request);) {
        const HANDLE pipe = Connect(argv[1]);
        std::cout << Converse(pipe, request + "\n") << std::endl;
        ::CloseHandle(pipe);
    }
}
