#pragma once

/// The desktop's own page of the programs that start at login. Main thread.
namespace tidemar::LoginItemsSettings {

/// Opens that page, or the folder of the entries where this desktop has no such page.
void open();

}  // namespace tidemar::LoginItemsSettings
