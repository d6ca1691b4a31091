# The whole dependency policy: what a layer may use. What is not listed here does not configure.
set(ZX_MAY_USE_kernels host::numbers TBB::tbb hwy)
set(ZX_MAY_USE_mc      host::numbers Threads::Threads)
set(ZX_MAY_USE_zx      host::mc Qt6::Core Qt6::Gui tcl)
set(ZX_MAY_USE_io      host::mc host::zx TIFF::TIFF JPEG::JPEG PNG::PNG ZLIB::ZLIB BZip2::BZip2 nlohmann_json::nlohmann_json)
set(ZX_MAY_USE_qx      host::mc host::zx Qt6::Core Qt6::Gui Qt6::Widgets Qt6::OpenGL Qt6::OpenGLWidgets Qt6::Svg
                       OpenGL::GL)
set(ZX_MAY_USE_package zx::kernels host::mc host::zx zxalign::control Qt6::Core Qt6::Gui)
set(ZX_MAY_USE_editor  zx::kernels host::mc host::zx host::qx zxalign::objects Qt6::Core Qt6::Gui Qt6::Widgets
                       OpenGL::GL)
set(ZX_MAY_USE_samples host::mc)
# The programs load the package; they see its window-less interface only, never its classes.
set(ZX_MAY_USE_apps    host::mc host::zx host::io zxalign::control zxalign::apps_common zx::samples
                       Qt6::Core Qt6::Gui CLI11::CLI11 nlohmann_json::nlohmann_json TBB::tbb)
set(ZX_MAY_USE_desktop host::mc host::zx host::io host::qx zxalign::control zxalign::apps_common
                       Qt6::Core Qt6::Gui Qt6::Widgets)

function(zx_check_dependencies layer)
  foreach(dep IN LISTS ARGN)
    if(NOT dep IN_LIST ZX_MAY_USE_${layer})
      message(FATAL_ERROR "The layer '${layer}' may not use ${dep} (see cmake/ZxTargets.cmake)")
    endif()
  endforeach()
endfunction()

# zx_add_library(<target> LAYER <layer> ALIAS <alias> TYPE STATIC|SHARED|MODULE
#                [HEADERS <public headers below include/>...] SOURCES <...> [DEPENDS <...>] [PRIVATE_DEPENDS <...>])
#
# Declares one library of one layer. Public headers live below include/ of its folder, are a file set,
# and each is compiled alone by the target all_verify_interface_header_sets.
function(zx_add_library target)
  cmake_parse_arguments(A "" "LAYER;ALIAS;TYPE" "HEADERS;SOURCES;DEPENDS;PRIVATE_DEPENDS" ${ARGN})
  if(A_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "zx_add_library(${target}): unknown arguments ${A_UNPARSED_ARGUMENTS}")
  endif()
  zx_check_dependencies(${A_LAYER} ${A_DEPENDS} ${A_PRIVATE_DEPENDS})
  add_library(${target} ${A_TYPE} ${A_SOURCES})
  if(A_ALIAS)
    add_library(${A_ALIAS} ALIAS ${target})
  endif()
  if(A_HEADERS)
    target_sources(${target} PUBLIC FILE_SET HEADERS BASE_DIRS include FILES ${A_HEADERS})
  endif()
  target_link_libraries(${target} PUBLIC ${A_DEPENDS} PRIVATE ${A_PRIVATE_DEPENDS} $<BUILD_INTERFACE:zx_compile>)
endfunction()
