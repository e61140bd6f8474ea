#pragma once

// How the console shows an element's editor. Only the console chooses a role.
enum class ElementWidgetRole : int {
    View = 0,
    Edit = 1,
};
