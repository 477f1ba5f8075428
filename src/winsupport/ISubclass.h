#pragma once
// The client interface of the subclassing layer: an object that receives
// chosen messages of a window it does not own. The layer names a client by the
// 32-bit address of this interface; the address belongs to the object from its
// construction to its end and is never given to another object.
#include <cstdint>

// How the window's previous procedure is treated around the clients.
enum EMsgResponse : int32_t {
    MsgResponseNone = 0,    // not called; the client's result is the message's result
    MsgResponseAfter = 1,   // called after the last client; its result stands
    MsgResponseBefore = 2,  // called before the first client; the client's result stands
};

class ISubclass {
public:
    ISubclass();
    virtual ~ISubclass();
    ISubclass(const ISubclass&) = delete;
    ISubclass& operator=(const ISubclass&) = delete;

    virtual int32_t MsgResponse() = 0;
    virtual void SetMsgResponse(int32_t lResponse) = 0;
    virtual int32_t WindowProc(int32_t hwnd, int32_t iMsg, int32_t wParam, int32_t lParam) = 0;

    // The address of this interface, never 0.
    int32_t Address() const { return address_; }
    // The living client at an address, or nullptr.
    static ISubclass* FromAddress(int32_t lAddress);

private:
    int32_t address_;
};
