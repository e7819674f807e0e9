# Desktop integration (menu entry, icons, AppStream metainfo) and the Debian
# package made by CPack: `cpack -G DEB` in a build folder, or scripts/package.sh.
set(TAVIX_APP_ID org.tavix.Tavix)

install(FILES packaging/${TAVIX_APP_ID}.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
# USB3 Vision cameras for the user at the seat; numbered to come before 73-seat-late.rules,
# which grants the uaccess tag.
install(FILES scripts/70-tavix-usb3vision.rules DESTINATION lib/udev/rules.d)

string(TIMESTAMP TAVIX_RELEASE_DATE "%Y-%m-%d" UTC)
configure_file(packaging/${TAVIX_APP_ID}.metainfo.xml ${CMAKE_BINARY_DIR}/${TAVIX_APP_ID}.metainfo.xml @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/${TAVIX_APP_ID}.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)

set(TAVIX_ICON_SVG ${PROJECT_SOURCE_DIR}/packaging/${TAVIX_APP_ID}.svg)
install(FILES ${TAVIX_ICON_SVG} DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
# The bitmap sizes are drawn from the SVG at build time.
find_program(RSVG_CONVERT rsvg-convert)
if(RSVG_CONVERT)
  set(icons)
  foreach(size 48 128 256)
    set(png ${CMAKE_BINARY_DIR}/icons/${size}x${size}/${TAVIX_APP_ID}.png)
    add_custom_command(OUTPUT ${png}
      COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/icons/${size}x${size}
      COMMAND ${RSVG_CONVERT} -w ${size} -h ${size} -o ${png} ${TAVIX_ICON_SVG}
      DEPENDS ${TAVIX_ICON_SVG}
      COMMENT "Drawing the ${size}x${size} icon")
    install(FILES ${png} DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/${size}x${size}/apps)
    list(APPEND icons ${png})
  endforeach()
  add_custom_target(tavix_icons ALL DEPENDS ${icons})
else()
  message(WARNING "rsvg-convert not found (Debian: librsvg2-bin): the package gets the SVG icon only")
endif()

# Debian's documentation files: the copyright, and the changelog and manual page
# compressed as its policy asks (gzip -9n: no name or time stamp, so the package is
# reproducible). They hang on the program's target so that a build of `tavix` alone
# can still be packed.
find_program(GZIP gzip REQUIRED)
set(TAVIX_DOC_DIR ${CMAKE_INSTALL_DATADIR}/doc/tavix)
set(TAVIX_GZIPPED)
foreach(pair "changelog;changelog" "tavix.1;man/tavix.1")
  list(GET pair 0 source)
  list(GET pair 1 name)
  set(copy ${CMAKE_BINARY_DIR}/packaging/${name})
  add_custom_command(OUTPUT ${copy}.gz
    COMMAND ${CMAKE_COMMAND} -E copy ${PROJECT_SOURCE_DIR}/packaging/${source} ${copy}
    COMMAND ${GZIP} -9nf ${copy}
    DEPENDS ${PROJECT_SOURCE_DIR}/packaging/${source}
    COMMENT "Compressing ${name}")
  list(APPEND TAVIX_GZIPPED ${copy}.gz)
endforeach()
add_custom_target(tavix_docs ALL DEPENDS ${TAVIX_GZIPPED})
add_dependencies(tavix tavix_docs)
install(FILES packaging/copyright ${CMAKE_BINARY_DIR}/packaging/changelog.gz DESTINATION ${TAVIX_DOC_DIR})
install(FILES ${CMAKE_BINARY_DIR}/packaging/man/tavix.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)

# The hardening Debian gives its own programs: relocations resolved at start and then
# read-only, and checked string and memory calls where the build optimises (the checks
# need it).
target_link_options(tavix PRIVATE LINKER:-z,relro LINKER:-z,now)
foreach(target tavix tavix_core tavix_ui)
  target_compile_definitions(${target} PRIVATE $<$<CONFIG:Release,MinSizeRel>:_FORTIFY_SOURCE=2>)
endforeach()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tavix)
set(CPACK_PACKAGE_VENDOR "The Tavix developers")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "live camera view, still pictures and calibrated measurement")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
  "Tavix shows the live picture of a measuring camera (GenICam, vendor SDK or\n"
  "a simulated camera), freezes a still and measures on it with the mouse in\n"
  "calibrated units: distances, circles, arcs, angles, areas and point counts.\n"
  "Results save as CSV; pictures as bitmap or JPEG, interval series or video.\n"
  "English and Japanese texts.")
string(JOIN "" CPACK_DEBIAN_PACKAGE_DESCRIPTION ${CPACK_DEBIAN_PACKAGE_DESCRIPTION})
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "The Tavix developers <developers@tavix.org>")
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
# The dependencies follow from the libraries the executable links.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Plug-ins are loaded at run time, so no library names them: recording needs appsrc and
# videorate (base) and the AVI muxer (good), the graph camera appsink and videoconvert
# (base) and, for USB cameras, v4l2src (good).
set(CPACK_DEBIAN_PACKAGE_DEPENDS "gstreamer1.0-plugins-base, gstreamer1.0-plugins-good")
# Japanese texts want a CJK font and Qt's own Japanese texts for message boxes and file dialogs.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "fonts-noto-cjk, qt6-translations-l10n")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
include(CPack)
