# The ASF each shared AMC motion pairs with, from the data README's table; sourced by the scripts
# that run over the shared data (../shared/data).
# shellcheck disable=SC2034  # used by the scripts that source it
declare -A skeleton_of=(
  [cmu02_02_01_walk]=cmu02_fzzzz_walk_vs [cmu02_fzzzz_walk_01_crlf]=cmu02_fzzzz_walk
  [cmu_01_01]=cmu_01 [cmu_07_05-walk]=cmu_07-walk [cmu_07_12-walk]=cmu_07-walk
  [cmu_09_06-run]=cmu_09-run [cmu_11_01]=cmu_11 [cmu_131_04-dance]=cmu_131-dance
  [cmu_135_06-martialArts]=cmu_135-martialArts [cmu_16_15]=cmu_16 [mo_131_04_crlf]=mo_mjackson
  [mo_135_02]=mo_martialwalk [mo_golf_01]=mo_golf [mo_md_walk]=mo_moderndance [mo_null_pose]=mo_walk
)
