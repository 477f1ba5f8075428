#pragma once
// Help files open in the desktop's viewer for their type.
#include "platform/Help.h"

class QtHelpService : public IHelpService {
public:
    bool Open(const HelpRequest& request) override;
};
