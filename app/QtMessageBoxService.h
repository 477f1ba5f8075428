#pragma once
// The runtime's message box as a Qt message box.
#include <QWidget>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "platform/MessageBox.h"

class QMessageBox;

class QtMessageBoxService : public IMessageBoxService {
public:
    // The box's owner; the default takes the active window.
    using OwnerLookup = std::function<QWidget*()>;

    QtMessageBoxService();
    void SetOwnerLookup(OwnerLookup lookup);

    int32_t Show(const std::string& prompt, int32_t buttons, const std::string& title) override;

    // The box for a call, not yet shown; and the runtime's answer for the
    // button that closed it (none: the box was closed without a button).
    std::unique_ptr<QMessageBox> Build(const std::string& prompt, int32_t buttons, const std::string& title) const;
    static int32_t Answer(const QMessageBox& box, int32_t buttons);

private:
    OwnerLookup owner_;
};
