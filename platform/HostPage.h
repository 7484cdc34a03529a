#pragma once

#include <memory>

class CPropertyPage;

/// Hands a property page to the host, which owns it from here and deletes it through its virtual
/// destructor. On Windows that is the page itself; elsewhere an object whose table a host without a
/// settings sheet of its own can call: after the destructor OnInitDialog(), OnSetActive(),
/// OnKillActive(), OnOK(), OnCommand(id), Select(position), Selection(), IsVisible(id), Count(),
/// Item(position, name with room for 256 bytes).
void* AfxPageForHost(std::unique_ptr<CPropertyPage> page);
