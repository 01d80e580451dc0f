#pragma once

// Numbers of the executable's resources. Read by the resource compiler as well: defines only.

#define IDR_APPID 101      // registration script of the application id
#define IDR_MAPICLIENT 106 // registration script of class MapiDtClient
