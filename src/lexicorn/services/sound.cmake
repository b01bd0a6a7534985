find_package(Qt6 REQUIRED COMPONENTS Multimedia)
pkg_check_modules(ESPEAK_NG REQUIRED IMPORTED_TARGET espeak-ng)

add_library(lexicorn_sound STATIC
  ${CMAKE_CURRENT_LIST_DIR}/sound_player.cpp
  ${CMAKE_CURRENT_LIST_DIR}/qt_sound_player.cpp
  ${CMAKE_CURRENT_LIST_DIR}/offline_voice.cpp
  ${CMAKE_CURRENT_LIST_DIR}/voice_endpoint.cpp
  ${CMAKE_CURRENT_LIST_DIR}/word_audio.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ksw_play_sound.cpp
)
target_link_libraries(lexicorn_sound PUBLIC lexicorn_foundation Qt6::Multimedia PRIVATE PkgConfig::ESPEAK_NG)
lexicorn_strict(lexicorn_sound)
