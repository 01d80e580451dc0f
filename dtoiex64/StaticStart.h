#pragma once

class CdtOIEx64Module;

/// The module of this process. It stands from before wWinMain until behind it.
CdtOIEx64Module& Module() noexcept;
