# Renders the program's icon in one size, for desktops and formats without SVG.
find_program(RSVG_CONVERT rsvg-convert)
set(QUILLERY_ICON_FILE ${CMAKE_CURRENT_LIST_DIR}/quillery.svg)

# Adds a rule that makes `file` (an absolute path), a square PNG of `size` pixels. Needs RSVG_CONVERT.
function(add_png_icon size file)
  add_custom_command(
    OUTPUT ${file}
    COMMAND ${RSVG_CONVERT} --width ${size} --height ${size} --output ${file} ${QUILLERY_ICON_FILE}
    DEPENDS ${QUILLERY_ICON_FILE}
    VERBATIM)
endfunction()
