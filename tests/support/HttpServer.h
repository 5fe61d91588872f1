/// An HTTP server on the loopback interface, on a thread of its own, that answers what a test tells it, byte by byte.
#pragma once

#include "ZkBase/Windows.h"

#include <winsock2.h>

#include <atomic>
#include <map>
#include <mutex>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace zk_test {

class THttpServer {
public:
    THttpServer() {
        WSADATA tData;
        if (WSAStartup(MAKEWORD(2, 2), &tData) != 0) throw std::runtime_error("no sockets");
        hListener = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
        sockaddr_in tAddress{};
        tAddress.sin_family = AF_INET;
        tAddress.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        int iSize = sizeof tAddress;
        if (bind(hListener, reinterpret_cast<sockaddr *>(&tAddress), iSize) != 0 || listen(hListener, 8) != 0 ||
            getsockname(hListener, reinterpret_cast<sockaddr *>(&tAddress), &iSize) != 0) {
            throw std::runtime_error("no port to listen on");
        }
        uPort = ntohs(tAddress.sin_port);
        tThread = std::thread([this] { Serve(); });
    }
    ~THttpServer() {
        fStop = true;
        tThread.join();
        closesocket(hListener);
        WSACleanup();
    }
    THttpServer(THttpServer const &) = delete;
    THttpServer & operator=(THttpServer const &) = delete;

    /// What a request for the path, which begins with a slash, is answered with: in these pieces, a moment between
    /// them. Then the connection is closed.
    /// \param fReset broken off, so that the other side sees an error and not an end
    void Answer(std::string const & sPath, std::vector<std::string> const & sPieces, bool fReset = false) {
        std::lock_guard const tGuard(tMutex);
        tAnswers[sPath] = {sPieces, fReset};
    }
    /// The same for a whole answer with its body.
    void Answer(std::string const & sPath, std::string const & sStatus, std::string const & sBody) {
        Answer(sPath, {"HTTP/1.1 " + sStatus + "\r\nContent-Length: " + std::to_string(sBody.size()) +
                       "\r\nConnection: close\r\n\r\n" + sBody});
    }

    [[nodiscard]] std::wstring sGetUrl(std::wstring const & sPath) const {
        return L"http://127.0.0.1:" + std::to_wstring(uPort) + sPath;
    }
    /// The heads of all requests so far.
    [[nodiscard]] std::vector<std::string> sGetRequests() const {
        std::lock_guard const tGuard(tMutex);
        return sRequests;
    }

private:
    struct TAnswer {
        std::vector<std::string> sPieces;
        bool fReset;
    };

    void Serve() {
        while (!fStop) {
            fd_set tSet;
            FD_ZERO(&tSet);
            FD_SET(hListener, &tSet);
            timeval tWait{0, 20'000};
            if (select(0, &tSet, nullptr, nullptr, &tWait) == 1) {
                SOCKET const hConnection = accept(hListener, nullptr, nullptr);
                if (hConnection != INVALID_SOCKET) Serve(hConnection);
            }
        }
    }
    void Serve(SOCKET hConnection) {
        TAnswer const tAnswer = tFindAnswer(sReadHead(hConnection));
        for (std::string const & sPiece : tAnswer.sPieces) {
            if (&sPiece != &tAnswer.sPieces.front()) Sleep(20);
            send(hConnection, sPiece.data(), static_cast<int>(sPiece.size()), 0);
        }
        if (tAnswer.fReset) {
            Sleep(50); // what was sent arrives before
            linger const tLinger{1, 0};
            setsockopt(hConnection, SOL_SOCKET, SO_LINGER, reinterpret_cast<char const *>(&tLinger), sizeof tLinger);
        } else {
            shutdown(hConnection, SD_SEND);
        }
        closesocket(hConnection);
    }
    static std::string sReadHead(SOCKET hConnection) {
        std::string sHead;
        char c = 0;
        while (!sHead.ends_with("\r\n\r\n") && recv(hConnection, &c, 1, 0) == 1)
            sHead += c;
        return sHead;
    }
    TAnswer tFindAnswer(std::string const & sHead) {
        std::lock_guard const tGuard(tMutex);
        sRequests.push_back(sHead);
        std::size_t const uPath = sHead.find(' ') + 1;
        auto const pAnswer = tAnswers.find(sHead.substr(uPath, sHead.find(' ', uPath) - uPath));
        if (pAnswer != tAnswers.end()) return pAnswer->second;
        return {{"HTTP/1.1 500 Untold\r\nContent-Length: 0\r\nConnection: close\r\n\r\n"}, false};
    }

    SOCKET hListener = INVALID_SOCKET;
    unsigned uPort = 0;
    std::atomic<bool> fStop = false;
    mutable std::mutex tMutex;
    std::map<std::string, TAnswer> tAnswers;
    std::vector<std::string> sRequests;
    std::thread tThread;
};

} // namespace zk_test
