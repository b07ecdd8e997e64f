#pragma once

// Hands the heap's free pages back to the system. After a 4K capture the
// allocator keeps what the snapshots, the overlay's backing stores and the
// encoders freed; an idle tray copy should not.
namespace FreeMemory {
void returnToSystem();
}
