# Every library that the project stands on, in one place.
find_package(Threads REQUIRED)
find_package(TBB REQUIRED)
find_package(Qt6 6.4 REQUIRED COMPONENTS Core Gui)
find_package(PkgConfig REQUIRED)
pkg_check_modules(TCL REQUIRED IMPORTED_TARGET tcl) # CMake's own module asks for Tk as well.
find_package(TIFF REQUIRED)
find_package(JPEG REQUIRED)
find_package(PNG REQUIRED)
find_package(ZLIB REQUIRED)
find_package(BZip2 REQUIRED)
find_package(CLI11 REQUIRED)
find_package(nlohmann_json REQUIRED)

add_library(tcl INTERFACE)
target_link_libraries(tcl INTERFACE PkgConfig::TCL)

if(ZX_BUILD_TESTS)
  find_package(GTest REQUIRED)
  # Reads the files that host/io writes, as a second opinion.
  find_package(ITK 5.2 REQUIRED COMPONENTS ITKCommon ITKIOImageBase ITKIONRRD ITKIOMRC ITKIOMeta ITKIONIFTI)
  add_library(itk_io INTERFACE)
  target_include_directories(itk_io SYSTEM INTERFACE ${ITK_INCLUDE_DIRS})
  target_link_libraries(itk_io INTERFACE ${ITK_LIBRARIES})
endif()
if(ZX_BUILD_BENCH)
  find_package(benchmark REQUIRED)
endif()
