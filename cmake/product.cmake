# The names of the maker and of the product, and other facts that several files need. Each, like the version, is a macro
# of generated/version.h (C++ and resources), a define of generated/product.nsh (installer), a variable of
# generated/product.sh (scripts), and can be used in files that CMake configures.
set(TAVREL_MAKER "NORVIK Software Inc.")
set(TAVREL_COPYRIGHT "Copyright (C) ${TAVREL_MAKER}")
set(TAVREL_SUPPORT "https://www.norvik.example/support")
set(TAVREL_ASSEMBLY "NORVIK.QRTTavrelUtility")
set(TAVREL_PRODUCT "Varnexa")
set(TAVREL_PRODUCT_VERSION "15.0")
# Also the name of the product's uninstall entry.
set(TAVREL_PRODUCT_LABEL "${TAVREL_PRODUCT} ${TAVREL_PRODUCT_VERSION}")
set(TAVREL_TITLE "${TAVREL_PRODUCT_LABEL} Tavrel Utility")
# The product's executable.
set(TAVREL_IMAGE "Qrt.exe")
string(TOLOWER "${TAVREL_IMAGE}" TAVREL_IMAGE_LOWER)
string(TOLOWER "${TAVREL_PRODUCT}" TAVREL_PRODUCT_LOWER)
# Below folders named like the product: the program, a user's settings, the logs.
set(TAVREL_FOLDER "QRT15")
# The beginning of the names of logs, and of the agent that the update server sees.
set(TAVREL_PREFIX "QRT_15")
set(TAVREL_UPDATE_HOST "updates.varnexa.example" CACHE STRING
    "Update host that is asked when the settings file names none")
set(TAVREL_PROBE_ADDRESS "http://www.example.com/" CACHE STRING
    "Public address whose reachability is tested before the update host is asked")
# The access list of the log folder. SY the system, BA administrators, BU ordinary users, S-1-3-4 a file's owner.
# Users list it and create files (0x1200ab), but no folders. They read and write all files, and only administrators
# delete a file or change its rights (0x12019f = FILE_GENERIC_READ | FILE_GENERIC_WRITE). The right to append is not
# enough: the utility opens its log with GENERIC_WRITE and cuts off an entry that did not fit on the disk.
set(TAVREL_LOG_RIGHTS "O:BAD:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;;0x1200ab;;;BU)(A;OIIO;0x12019f;;;BU)(A;OIIO;0x12019f;;;S-1-3-4)")
# Of the notice in it.
set(TAVREL_NOTICE_RIGHTS "O:BAD:P(A;;FA;;;SY)(A;;FA;;;BA)(A;;0x120089;;;BU)")

set(TAVREL_FILE_VERSION "${PROJECT_VERSION}.${TAVREL_DRAFT}")
string(REPLACE "." ", " numbers ${TAVREL_FILE_VERSION})
set(generated ${PROJECT_BINARY_DIR}/generated)
foreach(name IN ITEMS VERSION FILE_VERSION MAKER COPYRIGHT SUPPORT PRODUCT PRODUCT_LOWER PRODUCT_VERSION PRODUCT_LABEL
                      TITLE IMAGE IMAGE_LOWER FOLDER PREFIX UPDATE_HOST PROBE_ADDRESS LOG_RIGHTS NOTICE_RIGHTS)
  set(value "${TAVREL_${name}}")
  string(APPEND product_macros "#define TAVREL_${name} \"${value}\"\n")
  string(APPEND product_defines "!define TAVREL_${name} \"${value}\"\n")
  string(APPEND product_variables "TAVREL_${name}='${value}'\n")
endforeach()
file(CONFIGURE OUTPUT ${generated}/version.h CONTENT "#pragma once
#define TAVREL_FILE_VERSION_NUMBERS ${numbers}
#define TAVREL_FILE_FLAGS ${TAVREL_FILE_FLAGS}
${product_macros}")
file(CONFIGURE OUTPUT ${generated}/product.nsh CONTENT "${product_defines}")
file(CONFIGURE OUTPUT ${generated}/product.sh CONTENT "${product_variables}")
configure_file(resources/app.manifest.in ${generated}/app.manifest @ONLY)
configure_file(packaging/korsa.ini.in ${generated}/korsa.ini @ONLY NEWLINE_STYLE DOS)
configure_file(packaging/deploy.ps1.in ${generated}/deploy.ps1 @ONLY NEWLINE_STYLE DOS)
