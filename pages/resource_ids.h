// The numbers of the pages' resources and controls, for the resource compiler and the pages alike: hence
// macros.
#pragma once

#define TARVEX_DIALOG_ABOUT 9
#define TARVEX_DIALOG_SETTINGS 105
#define TARVEX_TITLE_ABOUT 102
#define TARVEX_TITLE_SETTINGS 103
#define TARVEX_IMAGE_LOGO 104
#define TARVEX_IMAGE_FILE 106

#define TARVEX_ABOUT_TITLE 1001
#define TARVEX_ABOUT_VERSION 1002
#define TARVEX_ABOUT_LOGO 1003
#define TARVEX_ABOUT_FILE 1005
#define TARVEX_SETTINGS_ANNEX_B 1004
#define TARVEX_SETTINGS_CHAPTERS 1006
#define TARVEX_SETTINGS_SEPARATE_PINS 1008
