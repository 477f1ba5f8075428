#include <gtest/gtest.h>

#include <vector>

#include "Recorder.h"
#include "platform/LastError.h"
#include "platform/Windows.h"

TEST(WindowsTest, WindowsHaveParentsAndProcedures) {
    const int32_t parent = CreatePlatformWindow();
    const int32_t child = CreatePlatformWindow(parent);
    EXPECT_EQ(parent % 4, 0);
    EXPECT_EQ(SetParent(child, 0), parent);
    EXPECT_EQ(GetParent(child), 0);

    // A new window answers through the default procedure; a replaced one
    // through its new procedure, and the old one stays callable.
    Recorder recorder;
    EXPECT_EQ(SendMessageA(child, WM_HSCROLL, 5, 0), 0);
    const int32_t old = recorder.Attach(child);
    EXPECT_EQ(old, DefWindowProcAddress());
    EXPECT_EQ(SendMessageA(child, WM_HSCROLL, 5, 0), 6);
    EXPECT_EQ(CallWindowProcA(old, child, WM_HSCROLL, 5, 0), 0);

    EXPECT_EQ(DestroyWindow(child), 1);
    for (const int32_t gone : {child, 4, -4}) {
        SetLastError(0);
        EXPECT_EQ(IsWindow(gone), 0);
        EXPECT_EQ(SetPropA(gone, "1234", 1), 0);
        EXPECT_EQ(SendMessageA(gone, WM_HSCROLL, 5, 0), 0);
        EXPECT_EQ(recorder.Attach(gone), 0);
        EXPECT_EQ(GetLastError(), ERROR_INVALID_WINDOW_HANDLE);
    }
    EXPECT_EQ(recorder.seen.size(), 1u);
    DestroyWindow(parent);
}

TEST(WindowsTest, PostedMessagesWaitForAPassAndComeInOrder) {
    Recorder recorder;
    const int32_t a = CreatePlatformWindow();
    const int32_t b = CreatePlatformWindow();
    recorder.Attach(a);
    recorder.Attach(b);
    int asked = 0;
    SetPostedMessageNotify([&asked] { ++asked; });

    EXPECT_EQ(PostMessageA(a, MM_WOM_DONE, 1, 0), 1);
    EXPECT_EQ(PostMessageA(b, MM_WOM_DONE, 2, 0), 1);
    EXPECT_EQ(PostMessageA(a, WM_VSCROLL, 3, 0), 1);
    EXPECT_EQ(PostMessageA(a + 1000, WM_VSCROLL, 4, 0), 0);
    EXPECT_EQ(asked, 1);
    EXPECT_TRUE(recorder.seen.empty());
    // A window that ends before the pass loses its messages.
    DestroyWindow(b);
    EXPECT_EQ(DispatchPostedMessages(), 2u);
    ASSERT_EQ(recorder.seen.size(), 2u);
    EXPECT_EQ(recorder.seen[0].wParam, 1);
    EXPECT_EQ(recorder.seen[1].uMsg, WM_VSCROLL);

    // The queue is bounded.
    for (size_t i = 0; i < kPostedMessageLimit; ++i) PostMessageA(a, MM_WOM_DONE, 0, 0);
    EXPECT_EQ(asked, 2);
    SetLastError(0);
    EXPECT_EQ(PostMessageA(a, MM_WOM_DONE, 0, 0), 0);
    EXPECT_EQ(GetLastError(), ERROR_NOT_ENOUGH_QUOTA);
    EXPECT_EQ(DispatchPostedMessages(), kPostedMessageLimit);
    EXPECT_EQ(PostedMessageCount(), 0u);
    SetPostedMessageNotify({});
    DestroyWindow(a);
}
