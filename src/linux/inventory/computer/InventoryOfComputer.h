#pragma once

#include "linux/inventory/overview/PasskeyInventory.h"

#include <memory>

namespace kelo::authenticator {
class PasskeySheetFactory;
}

namespace kelo::inventory {

/// The inventory of this user on this computer. Touches no file, helper or thread before it is
/// asked for something. The factory must outlive its last task. Main thread.
std::shared_ptr<PasskeyInventory> inventoryOfComputer(authenticator::PasskeySheetFactory& sheets);

} // namespace kelo::inventory
