#pragma once

// Resources.
#define IDI_APP 101
#define IDD_UPDATES 102
#define IDD_LOG 103

// Commands of the main sheet.
#define ID_APP_ABOUT 32772

// Patch update page.
#define IDC_RETRY 1099
#define IDC_MESSAGE 1114
#define IDC_PATCH_GROUP 1115
#define IDC_INSTALL 1116
#define IDC_CHECK_ON_STARTUP 1117
#define IDC_HIDE_NETWORK_ERRORS 1118
#define IDC_NOTE 1119
#define IDC_CONTINUE 1162

// Log page.
#define IDC_LOG_TEXT 1201
#define IDC_SAVE_LOG 1202
#define IDC_LOG_FILE 1203
