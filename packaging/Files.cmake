# What every package of Wagemill holds besides the program itself, wherever it is installed; one list for all systems.

# Beside the program, in its private folder; paths below resources/.
set(WAGEMILL_PROGRAM_FILES HAND-M.CUR x/o.cjs Splash/wagemill.png)

# For the reader; paths below the repository. The manual names its pictures as "pictures/manual/...", so they are in
# that folder beside it.
set(WAGEMILL_DOCUMENTS docs/manual.md docs/licences.md CHANGELOG.md LICENSE)
file(GLOB WAGEMILL_MANUAL_PICTURES CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/../docs/pictures/manual/*.png)
