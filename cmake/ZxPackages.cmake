# Every library that the project stands on, in one place.
find_package(Threads REQUIRED)
find_package(TBB REQUIRED)
find_package(Qt6 6.4 REQUIRED COMPONENTS Core Gui)
find_package(TIFF REQUIRED)
find_package(ZLIB REQUIRED)
find_package(BZip2 REQUIRED)
find_package(CLI11 REQUIRED)
find_package(nlohmann_json REQUIRED)
find_package(ITK 5.2 REQUIRED COMPONENTS
  ITKCommon ITKIOImageBase ITKIONRRD ITKIOMRC ITKIOMeta ITKIONIFTI ITKIOPNG ITKIOJPEG ITKIOBMP)

# Only the image readers and writers of ITK are used, through itk::ImageIOBase.
add_library(itk_io INTERFACE)
target_include_directories(itk_io SYSTEM INTERFACE ${ITK_INCLUDE_DIRS})
target_link_libraries(itk_io INTERFACE ${ITK_LIBRARIES})

if(ZX_BUILD_TESTS)
  find_package(GTest REQUIRED)
endif()
if(ZX_BUILD_BENCH)
  find_package(benchmark REQUIRED)
endif()
